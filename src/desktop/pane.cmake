# The part browser's pane.

partkeep_library(partkeep_pane
  SOURCES
    pane/browser_pane.cpp
    pane/browser_pane_texts.cpp
    pane/browser_pane_widgets.cpp
    pane/column_menu.cpp
    pane/list_export.cpp
    pane/pane_icons.cpp
    pane/pane_places.cpp
    pane/pane_texts.cpp
    pane/pane_widgets.cpp
    pane/part_browser_factory.cpp
    pane/part_list_accessible.cpp
    pane/part_list_model.cpp
    pane/part_list_view.cpp
    pane/part_pictures.cpp
    pane/part_row_delegate.cpp
    pane/server_tree_model.cpp
  LINK partkeep_library partkeep_readable_colours Qt6::Widgets)
