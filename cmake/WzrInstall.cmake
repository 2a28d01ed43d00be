# The installed tree: libraries, headers under include/wzrframework, CMake package, pkg-config files.
#
# The builds for Qt 6 and Qt 5 share a prefix. What differs between them carries the version of Qt in
# its name or its folder: libraries, modules, pkg-config files, the CMake package's qt6/ and qt5/.
# Headers, man pages and the package's choosing files are the same in both. The tools do the same
# with either Qt and have one name: those installed last are there.
include(CMakePackageConfigHelpers)

set(WZR_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/WzrFramework")
set(WZR_BUILD_DIR "${WZR_PACKAGE_DIR}/qt${WZR_QT_VERSION}")
set(WZR_HEADERS_DIR "${CMAKE_INSTALL_INCLUDEDIR}/wzrframework")
install(TARGETS wzrframework
    EXPORT WzrFrameworkTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    INCLUDES DESTINATION "${WZR_HEADERS_DIR}" # for a CMake that knows no file sets
    FILE_SET HEADERS DESTINATION "${WZR_HEADERS_DIR}"
    FILE_SET singleapplication DESTINATION "${WZR_HEADERS_DIR}")
# Loaded by the library, which looks for it from its own folder.
if(TARGET wzrlogind)
    install(TARGETS wzrlogind
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}/${WZR_MODULE_FOLDER}")
endif()
install(EXPORT WzrFrameworkTargets
    NAMESPACE WzrFramework::
    DESTINATION "${WZR_BUILD_DIR}")

# The component "singleapplication": only who asks for it needs Widgets.
install(TARGETS wzrsingleapplication
    EXPORT WzrFrameworkSingleApplicationTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    INCLUDES DESTINATION "${WZR_HEADERS_DIR}"
    FILE_SET HEADERS DESTINATION "${WZR_HEADERS_DIR}")
install(EXPORT WzrFrameworkSingleApplicationTargets
    NAMESPACE WzrFramework::
    DESTINATION "${WZR_BUILD_DIR}")

install(FILES
    cmake/package/WzrFrameworkConfig.cmake
    cmake/package/WzrFrameworkConfigVersion.cmake
    cmake/package/WzrFrameworkQt.cmake
    DESTINATION "${WZR_PACKAGE_DIR}")
configure_package_config_file(cmake/package/WzrFrameworkBuild.cmake.in WzrFrameworkBuild.cmake.in
    INSTALL_DESTINATION "${WZR_BUILD_DIR}"
    PATH_VARS CMAKE_INSTALL_LIBDIR
    NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
file(GENERATE OUTPUT WzrFrameworkBuild.cmake INPUT "${CMAKE_CURRENT_BINARY_DIR}/WzrFrameworkBuild.cmake.in")
write_basic_package_version_file(WzrFrameworkBuildVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES
    "${CMAKE_CURRENT_BINARY_DIR}/WzrFrameworkBuild.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/WzrFrameworkBuildVersion.cmake"
    DESTINATION "${WZR_BUILD_DIR}")

# The pkg-config files find their prefix from where they lie, so that the tree can be moved.
file(RELATIVE_PATH WZR_PC_PREFIX
    "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
foreach(library IN ITEMS wzrframework wzrsingleapplication)
    set(package "${CMAKE_CURRENT_BINARY_DIR}/${library}${WZR_NAME_SUFFIX}.pc")
    configure_file(cmake/package/${library}.pc.in "${package}" @ONLY)
    install(FILES "${package}" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endforeach()
