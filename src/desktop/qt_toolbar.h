// The bar of tools at the top of a dialog: one row of picture buttons cut from the template's strip. A button
// looks pressed when the program says so, never because it was clicked.
#pragma once

#include "resources/dialog_templates.h"

#include <QFrame>
#include <QString>

#include <functional>

class QToolButton;

namespace partkeep {

class CQtToolbar : public QFrame {
public:
    using Command = std::function<void(int)>;
    using Text = std::function<QString(int)>;

    // Hidden. Calls `command` with a tool's number for each click.
    CQtToolbar(const ToolbarTemplate& toolbar, QWidget* parent, const Command& command);

    // Tool tips, asked for when they show; the same texts name the tools for screen readers.
    void EnableToolTips(const Text& text);
    void Press(int command, bool pressed);

private:
    [[nodiscard]] QToolButton* Tool(int command) const;
};

} // namespace partkeep
