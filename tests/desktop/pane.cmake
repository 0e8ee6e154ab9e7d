if(TARGET partkeep_library_fixture)
  partkeep_library(partkeep_played_pane
    SOURCES played_pane.cpp
    LINK partkeep_pane partkeep_played_user partkeep_controls partkeep_library_fixture Qt6::Test)

  partkeep_test(pane_test
    SOURCES pane_pages_test.cpp pane_selection_test.cpp pane_state_test.cpp pane_trouble_test.cpp
    LINK partkeep_played_pane)

  partkeep_test(whole_dialog_test
    SOURCES whole_dialog_test.cpp
    LINK partkeep_played_pane partkeep_qt_windows partkeep_host partkeep_test_support)
  # Once per scale of the screen: the scale counts from the start of a process.
  get_test_property(whole_dialog_test ENVIRONMENT environment)
  if(NOT environment)
    set(environment "")
  endif()
  foreach(scale IN ITEMS 1.5 2)
    add_test(NAME whole_dialog_test_at_${scale} COMMAND whole_dialog_test --gtest_filter=*Looks*)
    set_tests_properties(whole_dialog_test_at_${scale} PROPERTIES
      TIMEOUT 300 ENVIRONMENT "QT_SCALE_FACTOR=${scale};${environment}")
  endforeach()
endif()
