# The plain decoder comes from the tests' raster.
if(NOT TARGET partkeep_raster_context)
  include("${PROJECT_SOURCE_DIR}/tests/support/raster_context.cmake")
endif()
partkeep_fuzz(dib_fuzz SOURCES dib_fuzz.cpp LINK partkeep_controls partkeep_raster_context)
if(TARGET partkeep_dib_pixels)
  target_link_libraries(dib_fuzz PRIVATE partkeep_dib_pixels)
  target_compile_definitions(dib_fuzz PRIVATE PARTKEEP_FUZZ_DIB_PIXELS)
endif()
