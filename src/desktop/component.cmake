# The component as hosts on this platform load it: only its interface is exported.
add_library(ORVICPartkeepRead SHARED c_interface.cpp desktop_services.cpp qt_application.cpp)
target_link_libraries(ORVICPartkeepRead
  PRIVATE partkeep_settings_for_all partkeep_host partkeep_qt_windows partkeep_pane partkeep_library ${CMAKE_DL_LIBS})
target_include_directories(ORVICPartkeepRead PUBLIC
  "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>" "$<INSTALL_INTERFACE:include>")
target_link_options(ORVICPartkeepRead PRIVATE "LINKER:--version-script=${CMAKE_CURRENT_LIST_DIR}/exports.map")
set_target_properties(ORVICPartkeepRead PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} CXX_VISIBILITY_PRESET hidden
  LINK_DEPENDS "${CMAKE_CURRENT_LIST_DIR}/exports.map")
