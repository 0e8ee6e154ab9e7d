partkeep_library(partkeep_readable_colours SOURCES readable_colours.cpp LINK Qt6::Gui)

# Dialog windows of the desktop: any dialog from its template.
partkeep_library(partkeep_qt_windows
  SOURCES caption_fit.cpp control_set.cpp control_widgets.cpp dialog_font.cpp dialog_frame.cpp picture_control.cpp
          qt_dialog_controls.cpp qt_dialog_fields.cpp qt_dialog_toolbar.cpp qt_dialog_window.cpp qt_input.cpp qt_keys.cpp qt_messages.cpp qt_panel_window.cpp qt_report_list.cpp qt_toolbar.cpp spoken_role.cpp
  LINK partkeep_qt_device_context partkeep_readable_colours partkeep_controls partkeep_templates partkeep_local_strings
       partkeep_process_values partkeep_platform Qt6::Widgets)
