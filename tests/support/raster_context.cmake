partkeep_library(partkeep_raster_context SOURCES "${CMAKE_CURRENT_LIST_DIR}/raster_context.cpp" LINK partkeep_dib)
target_include_directories(partkeep_raster_context PUBLIC "${PROJECT_SOURCE_DIR}")
if(PARTKEEP_GTEST)
  partkeep_library(partkeep_dib_sample
    SOURCES "${CMAKE_CURRENT_LIST_DIR}/dib_sample.cpp"
    LINK partkeep_raster_context ${PARTKEEP_GTEST})
endif()
