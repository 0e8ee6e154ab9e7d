# Installs the component, builds consumers against the installed copy by its CMake package and by pkg-config, and
# runs them. BUILD, SOURCE, PLACE and FLAGS come from the command line. The consumers are built by the tool that
# built the component: no other need be there.
file(REMOVE_RECURSE "${PLACE}")
function(must)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}: ${result}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

must(${CMAKE_COMMAND} --install "${BUILD}" --prefix "${PLACE}/prefix")
load_cache("${BUILD}" READ_WITH_PREFIX built_by_ CMAKE_GENERATOR CMAKE_MAKE_PROGRAM)
must(${CMAKE_COMMAND} -S "${SOURCE}" -B "${PLACE}/build" -G "${built_by_CMAKE_GENERATOR}"
  "-DCMAKE_MAKE_PROGRAM=${built_by_CMAKE_MAKE_PROGRAM}"
  "-DCMAKE_PREFIX_PATH=${PLACE}/prefix" "-DCMAKE_CXX_FLAGS=${FLAGS}" "-DCMAKE_C_FLAGS=${FLAGS}")
must(${CMAKE_COMMAND} --build "${PLACE}/build")
must("${PLACE}/build/c_consumer")
must("${PLACE}/build/cpp_consumer")

file(GLOB_RECURSE pkgconfig "${PLACE}/prefix/partkeep-read.pc")
get_filename_component(folder "${pkgconfig}" DIRECTORY)
must(${CMAKE_COMMAND} -E env "PKG_CONFIG_PATH=${folder}" pkg-config --cflags --libs partkeep-read)
separate_arguments(flags UNIX_COMMAND "${output} ${FLAGS}")
must(cc "${SOURCE}/consumer.c" -o "${PLACE}/pc_consumer" ${flags} "-Wl,-rpath,${folder}/..")
must("${PLACE}/pc_consumer")
