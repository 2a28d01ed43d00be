# Everything comes from the system's packages; scripts/setup installs them on Debian.
if(WZR_QT_VERSION STREQUAL "6")
    find_package(Qt6 6.4 REQUIRED COMPONENTS Core Network Widgets)
elseif(WZR_QT_VERSION STREQUAL "5")
    find_package(Qt5 5.15 REQUIRED COMPONENTS Core Network Widgets)
else()
    message(FATAL_ERROR "WZR_QT_VERSION must be 6 or 5, not \"${WZR_QT_VERSION}\"")
endif()
set(WZR_QT Qt${WZR_QT_VERSION})

find_package(PkgConfig REQUIRED)
pkg_check_modules(JSONCPP REQUIRED IMPORTED_TARGET jsoncpp>=1.9.5)
pkg_check_modules(TINYXML REQUIRED IMPORTED_TARGET tinyxml>=2.6.2)
pkg_check_modules(RAPIDJSON REQUIRED IMPORTED_TARGET RapidJSON)
