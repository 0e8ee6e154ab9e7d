if(TARGET partkeep_selection AND TARGET partkeep_library)
  partkeep_benchmark(selection_bench SOURCES selection_bench.cpp LINK partkeep_selection partkeep_library)
endif()
