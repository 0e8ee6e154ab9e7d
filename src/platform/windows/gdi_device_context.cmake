# The drawing calls of GDI, for whoever paints on a window of the system.
if(NOT TARGET partkeep_gdi_device_context)
  partkeep_library(partkeep_gdi_device_context SOURCES "${CMAKE_CURRENT_LIST_DIR}/gdi_device_context.cpp" LINK gdi32)
endif()
