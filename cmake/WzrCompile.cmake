# What holds for every target of the project.
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")

# What is installed for one version of Qt carries it in its name, so that both share a prefix.
set(WZR_NAME_SUFFIX "-qt${WZR_QT_VERSION}")
# The modules that the library loads lie in this folder, below the library's.
set(WZR_MODULE_FOLDER
    "wzrframework${WZR_NAME_SUFFIX}-${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

if(WZR_SANITIZE)
    add_compile_options(-fsanitize=${WZR_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${WZR_SANITIZE})
endif()

if(WZR_BUILD_FUZZERS)
    # The fuzzer sees which code its bytes reach, in everything that is built.
    add_compile_options(-fsanitize=fuzzer-no-link)
    add_link_options(-fsanitize=fuzzer-no-link)
    # RapidJSON adds an offset of zero to a null pointer, which clang tells and which does no harm.
    add_compile_options(-fno-sanitize=pointer-overflow)
endif()

# wzr_target_defaults(<target>): warnings, and the Qt rules that keep both Qt versions honest.
function(wzr_target_defaults target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
        $<$<BOOL:${WZR_WERROR}>:-Werror>)
    target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS QT_NO_FOREACH)
endfunction()

# wzr_hide_foreign_symbols(<library>): exports nothing that other libraries' headers make visible.
function(wzr_hide_foreign_symbols library)
    if(NOT APPLE)
        set(map "${PROJECT_SOURCE_DIR}/src/exports.map")
        target_link_options(${library} PRIVATE "LINKER:--version-script=${map}")
        set_property(TARGET ${library} APPEND PROPERTY LINK_DEPENDS "${map}")
    endif()
endfunction()
