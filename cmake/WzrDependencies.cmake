# Everything comes from the system's packages; scripts/setup installs them on Debian. What the
# library is built with at least, its users need at least: the package files say the same versions.
set(WZR_JSONCPP_MINIMUM 1.9.5)
set(WZR_TINYXML_MINIMUM 2.6.2)
if(WZR_QT_VERSION STREQUAL "6")
    set(WZR_QT_MINIMUM 6.4)
elseif(WZR_QT_VERSION STREQUAL "5")
    set(WZR_QT_MINIMUM 5.15)
else()
    message(FATAL_ERROR "WZR_QT_VERSION must be 6 or 5, not \"${WZR_QT_VERSION}\"")
endif()
set(WZR_QT Qt${WZR_QT_VERSION})
find_package(${WZR_QT} ${WZR_QT_MINIMUM} REQUIRED COMPONENTS Core Network Widgets)
if(NOT APPLE)
    find_package(${WZR_QT} REQUIRED COMPONENTS DBus)
endif()

find_package(PkgConfig REQUIRED)
pkg_check_modules(JSONCPP REQUIRED IMPORTED_TARGET jsoncpp>=${WZR_JSONCPP_MINIMUM})
# As the installed package calls it, whose targets name it.
pkg_check_modules(WZR_TINYXML REQUIRED IMPORTED_TARGET tinyxml>=${WZR_TINYXML_MINIMUM})
pkg_check_modules(RAPIDJSON REQUIRED IMPORTED_TARGET RapidJSON)
