if(TARGET partkeep_library_fixture)
  partkeep_library(partkeep_played_pane
    SOURCES played_pane.cpp
    LINK partkeep_pane partkeep_played_user partkeep_controls partkeep_library_fixture Qt6::Test)

  partkeep_test(pane_test
    SOURCES pane_pages_test.cpp pane_selection_test.cpp pane_state_test.cpp pane_trouble_test.cpp
    LINK partkeep_played_pane)
endif()
