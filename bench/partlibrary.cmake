if(TARGET partkeep_library)
  partkeep_benchmark(partlibrary_bench SOURCES partlibrary_bench.cpp LINK partkeep_library)
endif()
