# The toolbar's bitmap becomes a list of bytes, so that the one file serves here and in the resource compiler.
set(toolbar_bitmap "${CMAKE_CURRENT_LIST_DIR}/toolbar_212.bmp")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${toolbar_bitmap}")
file(READ "${toolbar_bitmap}" toolbar_bytes HEX)
string(REGEX REPLACE "(..)" "0x\\1," toolbar_bytes "${toolbar_bytes}")
file(CONFIGURE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/toolbar_212_bytes.inc" CONTENT "${toolbar_bytes}\n")

partkeep_library(partkeep_templates SOURCES dialog_templates.cpp)
target_include_directories(partkeep_templates PRIVATE "${CMAKE_CURRENT_BINARY_DIR}")
