# Installs the component, builds consumers against the installed copy by its CMake package and by pkg-config, and
# runs them. BUILD, SOURCE, PLACE, VERSION and FLAGS come from the command line. The consumers are built by the tool that
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
must("${PLACE}/build/c99_consumer")
must("${PLACE}/build/c11_consumer")
must("${PLACE}/build/cpp_consumer")

file(GLOB_RECURSE pkgconfig "${PLACE}/prefix/partkeep-read.pc")
get_filename_component(folder "${pkgconfig}" DIRECTORY)
must(${CMAKE_COMMAND} -E env "PKG_CONFIG_PATH=${folder}" pkg-config --cflags --libs partkeep-read)
separate_arguments(flags UNIX_COMMAND "${output} ${FLAGS}")
must(cc "${SOURCE}/consumer.c" -o "${PLACE}/pc_consumer" ${flags} "-Wl,-rpath,${folder}/..")
must("${PLACE}/pc_consumer")

# Without a graphical library, and with nothing but numbered names for hosts.
file(GLOB_RECURSE library "${PLACE}/prefix/libORVICPartkeepRead.so")
must(ldd "${library}")
if(output MATCHES "Qt6Gui|Qt6Widgets|libX11|libxcb|libGL|libEGL|wayland")
  message(FATAL_ERROR "loads graphics: ${output}")
endif()
must(nm -D --defined-only --with-symbol-versions "${library}")
if(NOT output MATCHES " partkeep_read_version@@PARTKEEP_READ_1.0\n" OR output MATCHES " [B-Zb-z] [^@\n]+\n")
  message(FATAL_ERROR "exports names without a version")
endif()

if(NOT FLAGS)
  must(${CMAKE_COMMAND} -E env "PYTHONPATH=${PLACE}/prefix/lib/python3/dist-packages" python3 -c
    "import partkeep_read as p\nfrom importlib.metadata import version\nassert p.Reader().parts() == []
print(*p.version(), sep='.')\nprint(version('partkeep-read'))") # by lines: a semicolon would divide the argument
  # One number in whatever was made.
  string(APPEND numbers "${output}")
  must("${PLACE}/prefix/bin/partkeep-library" --version)
  string(APPEND numbers "${output}")
  must(${CMAKE_COMMAND} -E env "PKG_CONFIG_PATH=${folder}" pkg-config --modversion partkeep-read)
  string(APPEND numbers "${output}")
  if(NOT numbers STREQUAL "${VERSION}\n${VERSION}\npartkeep-library ${VERSION}\n${VERSION}\n")
    message(FATAL_ERROR "other numbers than ${VERSION}: ${numbers}")
  endif()
else()
  message("consumer: Skipped\nthe interpreter cannot load what a sanitizer instruments\n[  SKIPPED ] python_package (0 ms)")
endif()
