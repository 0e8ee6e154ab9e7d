# The decoder needs no Qt.
partkeep_library(partkeep_dib_pixels SOURCES dib_pixels.cpp run_length.cpp LINK partkeep_dib)

partkeep_library(partkeep_qt_device_context SOURCES qt_device_context.cpp LINK partkeep_dib_pixels Qt6::Gui)
