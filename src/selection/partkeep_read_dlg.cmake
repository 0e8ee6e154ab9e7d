partkeep_library(partkeep_selection
  SOURCES add.cpp browser_click.cpp dialog_shell.cpp load.cpp partkeep_read_dlg.cpp preview_images.cpp
  LINK partkeep_companion_dialogs partkeep_partdata partkeep_server_list_file partkeep_machine_filter
       partkeep_options_file partkeep_controls partkeep_templates partkeep_local_strings partkeep_process_values
       partkeep_platform)
