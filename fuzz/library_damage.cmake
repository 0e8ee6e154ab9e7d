# No part of a build that nobody asks for: cmake --build --preset asan --target library_damage
if(TARGET partkeep_library)
  add_executable(library_damage EXCLUDE_FROM_ALL library_damage.cpp)
  target_link_libraries(library_damage PRIVATE partkeep_settings_for_all partkeep_library)
endif()
