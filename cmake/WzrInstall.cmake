# The installed tree: library, headers under include/wzrframework, CMake package, pkg-config file.
include(CMakePackageConfigHelpers)

set(WZR_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/WzrFramework")
install(TARGETS wzrframework
    EXPORT WzrFrameworkTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/wzrframework"
    FILE_SET singleapplication DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/wzrframework")
# Loaded by the library, which looks for it in its own folder.
if(TARGET wzrlogind)
    install(TARGETS wzrlogind LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
endif()
install(EXPORT WzrFrameworkTargets
    NAMESPACE WzrFramework::
    DESTINATION "${WZR_PACKAGE_DIR}")

# The component "singleapplication": only who asks for it needs Widgets.
install(TARGETS wzrsingleapplication
    EXPORT WzrFrameworkSingleApplicationTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/wzrframework")
install(EXPORT WzrFrameworkSingleApplicationTargets
    NAMESPACE WzrFramework::
    DESTINATION "${WZR_PACKAGE_DIR}")

configure_package_config_file(cmake/WzrFrameworkConfig.cmake.in WzrFrameworkConfig.cmake
    INSTALL_DESTINATION "${WZR_PACKAGE_DIR}")
write_basic_package_version_file(WzrFrameworkConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES
    "${CMAKE_CURRENT_BINARY_DIR}/WzrFrameworkConfig.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/WzrFrameworkConfigVersion.cmake"
    DESTINATION "${WZR_PACKAGE_DIR}")

# The pkg-config file finds its prefix from where it lies, so that the tree can be moved.
file(RELATIVE_PATH WZR_PC_PREFIX
    "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
configure_file(cmake/wzrframework.pc.in wzrframework.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/wzrframework.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
