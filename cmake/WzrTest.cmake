# wzr_add_test(<name> [SOURCES <more>...] [LIBRARIES <lib>...] [HELPERS <target>...] [TIMEOUT <s>]
#              [COST <s>])
#
# Builds <name>.cpp of the current folder with Qt Test and registers it. A helper is a program that
# the test starts; its path reaches the test as the macro HELPER_<TARGET>, in capitals. COST is about
# how long it takes, for tests that take more than a few seconds: those begin first, so that none of
# them is left running alone at the end.
function(wzr_add_test name)
    cmake_parse_arguments(arg "" "TIMEOUT;COST" "SOURCES;LIBRARIES;HELPERS" ${ARGN})
    add_executable(${name} ${name}.cpp ${arg_SOURCES})
    wzr_target_defaults(${name})
    target_link_libraries(${name} PRIVATE wzrtestsupport ${arg_LIBRARIES})
    foreach(helper IN LISTS arg_HELPERS)
        string(TOUPPER ${helper} macro)
        target_compile_definitions(${name} PRIVATE HELPER_${macro}="$<TARGET_FILE:${helper}>")
        add_dependencies(${name} ${helper})
    endforeach()
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES
        TIMEOUT ${arg_TIMEOUT}
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8")
    if(arg_COST)
        set_tests_properties(${name} PROPERTIES COST ${arg_COST})
    endif()
endfunction()

# wzr_add_helper(<name> [LIBRARIES <lib>...]): a program that tests start.
function(wzr_add_helper name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
    add_executable(${name} ${name}.cpp ${arg_SOURCES})
    wzr_target_defaults(${name})
    target_link_libraries(${name} PRIVATE wzrtestsupport ${arg_LIBRARIES})
endfunction()
