include("${CMAKE_CURRENT_LIST_DIR}/PartkeepReadTargets.cmake")
