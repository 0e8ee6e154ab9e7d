// The pane's tree and search box: the usual widgets, but that some keys pass them by.
#pragma once

#include "desktop/pane/part_list_view.h"

#include <QLineEdit>
#include <QToolButton>
#include <QTreeView>

#include <functional>
#include <optional>

namespace partkeep {

inline constexpr int button_side = 32; // by a mouse, in logical pixels

// A button with icon and text, reached by the keyboard too.
[[nodiscard]] QToolButton* MakePaneButton(const QString& text, QWidget* parent);

class CServerTree : public QTreeView {
public:
    // Reports user actions as the list does; `events` must outlive the tree.
    CServerTree(IPartListEvents& events, QWidget* parent);

    [[nodiscard]] bool Pressed() const { return finger_.has_value(); } // by a finger; the system knows of the mouse

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    IPartListEvents& events_;
    std::optional<QPoint> finger_; // that may be about to scroll
};

class CSearchBox : public QLineEdit {
public:
    explicit CSearchBox(QWidget* parent);

    // Keys that move in the list.
    void SetListKeys(std::function<void(QKeyEvent*)> sink) { list_keys_ = std::move(sink); }
    [[nodiscard]] QToolButton& ClearButton() { return *clear_; } // shown while there is text

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    std::function<void(QKeyEvent*)> list_keys_;
    QToolButton* clear_;
};

} // namespace partkeep
