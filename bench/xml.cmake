# Libraries to compare with; nothing but this benchmark uses them.
find_package(pugixml REQUIRED)
find_package(EXPAT REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(TINYXML2 REQUIRED IMPORTED_TARGET tinyxml2)
partkeep_benchmark(xml_bench
  SOURCES ratio_table.cpp xml_libraries.cpp xml_bench.cpp
  LINK partkeep_xml pugixml::pugixml PkgConfig::TINYXML2 EXPAT::EXPAT)
