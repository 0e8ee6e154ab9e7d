# On memory that is the heap's own piece by piece, so that the sanitizers see the edges of every block.
set(xml_watched_memory "${PROJECT_SOURCE_DIR}/tests/xml/watched_memory.cpp")
foreach(target IN ITEMS xml_parse xml_reader_model xml_round_trip xml_operations)
  partkeep_fuzz(${target}_fuzz SOURCES ${target}.cpp "${xml_watched_memory}" LINK partkeep_xml_store)
  target_include_directories(${target}_fuzz PRIVATE "${PROJECT_SOURCE_DIR}")
endforeach()
# And on the pool, whose pages pieces share.
partkeep_fuzz(xml_pool_operations_fuzz SOURCES xml_operations.cpp xml_pool.cpp LINK partkeep_xml)
target_include_directories(xml_pool_operations_fuzz PRIVATE "${PROJECT_SOURCE_DIR}")
