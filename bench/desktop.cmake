if(TARGET partkeep_pane)
  partkeep_benchmark(pane_bench SOURCES pane_bench.cpp LINK partkeep_pane)
endif()
