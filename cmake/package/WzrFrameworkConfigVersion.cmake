# The version of the build that a project gets. Where there is none for its Qt, that of another one:
# WzrFrameworkConfig.cmake then says what is wrong.
cmake_policy(VERSION 3.16...3.25)
include("${CMAKE_CURRENT_LIST_DIR}/WzrFrameworkQt.cmake")
if(_wzr_qts AND NOT _wzr_qt IN_LIST _wzr_qts)
    list(GET _wzr_qts 0 _wzr_qt)
endif()
include("${CMAKE_CURRENT_LIST_DIR}/qt${_wzr_qt}/WzrFrameworkBuildVersion.cmake" OPTIONAL)
