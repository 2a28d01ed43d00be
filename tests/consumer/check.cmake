# Installs build trees into one empty folder, moves that folder, and uses it as a project of a user
# does: runs the installed programs, looks for the CMake package in every way, and builds and runs
# the consumer through the CMake package and through pkg-config, once for each tree.
#
# BUILDS: the build trees; QTS: the version of Qt of each; BUILD_FIRST: whether to bring the trees
# up to date; HAS_PROGRAMS: whether they install any; SOURCE_DIR, WORK_DIR, CXX. A tree that does not
# exist is made from PROJECT_DIR.
cmake_minimum_required(VERSION 3.23)
foreach(variable IN ITEMS LD_LIBRARY_PATH PKG_CONFIG_PATH CMAKE_PREFIX_PATH)
    unset(ENV{${variable}})
endforeach()
set(ENV{QT_QPA_PLATFORM} offscreen)

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "${command}\nfailed with ${result}:\n${output}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

# Runs a consumer, which says which version of Qt it has loaded.
function(expect_ready program qt)
    run("${program}")
    if(NOT output MATCHES "consumer ready with Qt ${qt}\n")
        message(FATAL_ERROR "${program} said: ${output}")
    endif()
endfunction()

# The tree with what is installed from it, built.
function(bring_up_to_date build qt)
    if(NOT EXISTS "${build}/CMakeCache.txt")
        run("${CMAKE_COMMAND}" -S "${PROJECT_DIR}" -B "${build}" -G Ninja
            -DWZR_QT_VERSION=${qt} -DWZR_BUILD_TESTS=OFF -DWZR_BUILD_EXAMPLES=OFF
            -DCMAKE_BUILD_TYPE=Debug "-DCMAKE_CXX_COMPILER=${CXX}")
    endif()
    run("${CMAKE_COMMAND}" --build "${build}" --target
        wzrframework wzrsingleapplication wzrlogind wzrrecords wzrvalue)
endfunction()

# Installing a second tree must leave the files of the first as they are, but for the programs.
function(install_trees prefix)
    foreach(build qt IN ZIP_LISTS BUILDS QTS)
        if(BUILD_FIRST)
            bring_up_to_date("${build}" ${qt})
        endif()
        file(GLOB_RECURSE before "${prefix}/*")
        list(FILTER before EXCLUDE REGEX "/bin/")
        foreach(file IN LISTS before)
            file(MD5 "${file}" sum)
            list(APPEND sums "${sum}")
        endforeach()
        run("${CMAKE_COMMAND}" --install "${build}" --prefix "${prefix}")
        foreach(file IN LISTS before)
            list(POP_FRONT sums sum_before)
            file(MD5 "${file}" sum)
            if(NOT sum STREQUAL sum_before)
                message(FATAL_ERROR "the build for Qt ${qt} has changed ${file}")
            endif()
        endforeach()
    endforeach()
endfunction()

# Every installed program starts.
function(run_programs prefix)
    file(GLOB programs "${prefix}/bin/*")
    if(NOT programs)
        message(FATAL_ERROR "no program is installed")
    endif()
    foreach(program IN LISTS programs)
        run("${program}" --version)
        get_filename_component(name "${program}" NAME)
        if(NOT output MATCHES "^${name} [0-9]+\\.[0-9]+\\.[0-9]+\n$")
            message(FATAL_ERROR "${program} --version said: ${output}")
        endif()
    endforeach()
endfunction()

function(use_cmake_package prefix qt)
    set(build "${WORK_DIR}/build-qt${qt}")
    run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}/project" -B "${build}" -G Ninja -DQT_VERSION_MAJOR=${qt}
        "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_COMPILER=${CXX}")
    run("${CMAKE_COMMAND}" --build "${build}")
    expect_ready("${build}/consumer" ${qt})
    expect_ready("${build}/windowconsumer" ${qt})
endfunction()

# No flag but those that pkg-config gives, and the run path.
function(use_pkg_config prefix qt library program)
    file(GLOB_RECURSE package "${prefix}/${library}-qt${qt}.pc")
    get_filename_component(package_dir "${package}" DIRECTORY)
    get_filename_component(library_dir "${package_dir}" DIRECTORY)
    set(ENV{PKG_CONFIG_PATH} "${package_dir}")
    run(pkg-config --cflags --libs ${library}-qt${qt})
    string(STRIP "${output}" flags)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    foreach(flag IN ITEMS -std=c++17 -fPIC)
        if(NOT flag IN_LIST flags)
            message(FATAL_ERROR "${package} does not say ${flag}: ${flags}")
        endif()
    endforeach()
    run("${CXX}" "${SOURCE_DIR}/project/${program}.cpp" -o "${WORK_DIR}/${program}-qt${qt}"
        ${flags} "-Wl,-rpath,${library_dir}")
    expect_ready("${WORK_DIR}/${program}-qt${qt}" ${qt})
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
install_trees("${WORK_DIR}/prefix")
set(prefix "${WORK_DIR}/moved prefix")
file(RENAME "${WORK_DIR}/prefix" "${prefix}")
run_programs("${prefix}")
list(JOIN QTS "," qts)
run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}/choice" -B "${WORK_DIR}/choice" -G Ninja
    "-DINSTALLED=${prefix}" "-DINSTALLED_QTS=${qts}" "-DCMAKE_CXX_COMPILER=${CXX}")
foreach(qt IN LISTS QTS)
    use_cmake_package("${prefix}" ${qt})
    use_pkg_config("${prefix}" ${qt} wzrframework consumer)
    use_pkg_config("${prefix}" ${qt} wzrsingleapplication windowconsumer)
endforeach()
