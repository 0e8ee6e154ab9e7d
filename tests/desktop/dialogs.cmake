# Needs mounts of Linux.
partkeep_test(operator_runs_test
  SOURCES operator_run.cpp operator_runs_test.cpp
  LINK
    partkeep_host
    partkeep_library_fixture
    partkeep_library_commands
    partkeep_test_support)
