# The component as hosts on this platform load it: only its interface is exported.
add_library(ORVICPartkeepRead SHARED c_interface.cpp desktop_services.cpp qt_application.cpp)
target_link_libraries(ORVICPartkeepRead PRIVATE
  "$<BUILD_INTERFACE:partkeep_settings_for_all>" partkeep_host partkeep_qt_windows partkeep_pane partkeep_library
  ${CMAKE_DL_LIBS})
target_include_directories(ORVICPartkeepRead PUBLIC
  "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>" "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
target_link_options(ORVICPartkeepRead PRIVATE "LINKER:--version-script=${CMAKE_CURRENT_LIST_DIR}/exports.map")
set_target_properties(ORVICPartkeepRead PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} CXX_VISIBILITY_PRESET hidden
  LINK_DEPENDS "${CMAKE_CURRENT_LIST_DIR}/exports.map")

# What `cmake --install` puts down: library, headers, the library tool, a CMake package and a pkg-config file.
set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/PartkeepRead")
install(TARGETS ORVICPartkeepRead EXPORT PartkeepReadTargets LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(FILES "${PROJECT_SOURCE_DIR}/include/partkeep_read.h" "${PROJECT_SOURCE_DIR}/include/partkeep_read.hpp"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(TARGETS partkeep-library RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(EXPORT PartkeepReadTargets NAMESPACE PartkeepRead:: DESTINATION "${package_folder}")
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/PartkeepReadConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
configure_file("${PROJECT_SOURCE_DIR}/packaging/PartkeepReadConfig.cmake"
  "${CMAKE_CURRENT_BINARY_DIR}/PartkeepReadConfig.cmake" COPYONLY)
# The file finds its prefix from where it lies, so that an installation may be moved.
file(RELATIVE_PATH partkeep_prefix_from_pkgconfig "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
configure_file("${PROJECT_SOURCE_DIR}/packaging/partkeep-read.pc.in" "${CMAKE_CURRENT_BINARY_DIR}/partkeep-read.pc" @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/PartkeepReadConfig.cmake"
  "${CMAKE_CURRENT_BINARY_DIR}/PartkeepReadConfigVersion.cmake" DESTINATION "${package_folder}")
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/partkeep-read.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
