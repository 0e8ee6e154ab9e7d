if(TARGET partkeep_pane)
  partkeep_benchmark(pane_bench SOURCES pane_bench.cpp LINK partkeep_pane)
  partkeep_benchmark(dialog_bench
    SOURCES dialog_bench.cpp
    LINK partkeep_pane partkeep_qt_windows partkeep_host partkeep_library_commands)
endif()
