# The services that need a window, the registry or the component model.
partkeep_library(partkeep_windows
  SOURCES
    windows/control_site.cpp
    windows/dialog_init_data.cpp
    windows/dialog_scale.cpp
    windows/dispatch_call.cpp
    windows/gdi_device_context.cpp
    windows/hosted_control.cpp
    windows/picture_panel.cpp
    windows/site_window.cpp
    windows/waiting_input.cpp
    windows/win_dialog_controls.cpp
    windows/win_dialog_layout.cpp
    windows/win_dialog_toolbar.cpp
    windows/win_dialog_window.cpp
    windows/win_messages.cpp
    windows/win_panel.cpp
    windows/win_registry.cpp
  LINK partkeep_platform partkeep_string_resource windowscodecs comctl32 msimg32 ole32 oleaut32 uuid gdi32 user32 advapi32)
