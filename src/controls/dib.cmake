# Apart from the rest of the controls, for drawing code that needs no control: bitmaps in memory.
partkeep_library(partkeep_dib SOURCES dib_view.cpp dib_helpers.cpp LINK partkeep_platform)

target_sources(partkeep_controls PRIVATE "${CMAKE_CURRENT_LIST_DIR}/image_panel.cpp")
target_link_libraries(partkeep_controls PUBLIC partkeep_dib)
