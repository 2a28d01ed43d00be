# Installs the build tree into an empty folder, builds the consumer against it, twice: through the
# CMake package and through pkg-config, and runs both. Variables: BUILD_DIR, SOURCE_DIR, WORK_DIR,
# and LOGIND_MODULE, the file that has to lie beside the library.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "${command}\nfailed with ${result}:\n${output}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_ready program)
    run("${program}")
    if(NOT output MATCHES "consumer ready")
        message(FATAL_ERROR "${program} said: ${output}")
    endif()
endfunction()

set(prefix "${WORK_DIR}/prefix")
file(REMOVE_RECURSE "${WORK_DIR}")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${prefix}")

run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${WORK_DIR}/build" -G Ninja
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_COMPILER=${CXX}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build")
expect_ready("${WORK_DIR}/build/consumer")
expect_ready("${WORK_DIR}/build/windowconsumer")

file(GLOB_RECURSE packages "${prefix}/wzrframework.pc")
list(LENGTH packages count)
if(NOT count EQUAL 1)
    message(FATAL_ERROR "one wzrframework.pc was expected, found: ${packages}")
endif()
get_filename_component(package_dir "${packages}" DIRECTORY)
set(ENV{PKG_CONFIG_PATH} "${package_dir}")
run(pkg-config --cflags --libs wzrframework)
string(STRIP "${output}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
get_filename_component(library_dir "${package_dir}" DIRECTORY)
if(LOGIND_MODULE AND NOT EXISTS "${library_dir}/${LOGIND_MODULE}")
    message(FATAL_ERROR "${LOGIND_MODULE} is not installed beside the library")
endif()
run("${CXX}" -std=c++17 -fPIC "${SOURCE_DIR}/consumer.cpp" -o "${WORK_DIR}/pkgconfig-consumer"
    ${flags} "-Wl,-rpath,${library_dir}")
expect_ready("${WORK_DIR}/pkgconfig-consumer")
