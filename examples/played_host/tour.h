// Plays an operator on the component's windows by real clicks and keys, from inside the event loop that the
// dialog runs, and keeps a picture of each window on the way.
#pragma once

#include <QString>
#include <QWidget>

#include <functional>
#include <vector>

class QToolButton;

class CTour {
public:
    // `pictures` is an existing folder; the files are named by window and `suffix`.
    CTour(QString pictures, QString suffix);

    // Instead of the usual walk: what the part browser can do, a picture each.
    void ShowFeatures();

    // One step after the other, in the loops of windows that a step opens too.
    void Start();

    // False when a step did not find what it was to work on; the dialogs are then closed.
    [[nodiscard]] bool Succeeded() const { return problem_.isEmpty() && next_ == steps_.size(); }
    [[nodiscard]] const QString& Problem() const { return problem_; }

private:
    void Next();
    void Fail(const QString& problem);

    [[nodiscard]] QWidget* Window(int number);
    [[nodiscard]] QWidget* Control(int number, int id);
    void Click(int number, int id);
    void Press(int number, Qt::Key key, Qt::KeyboardModifiers modifiers = {});
    void Type(int number, const char* text);
    void ClickPart(int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void OpenInTree(const char* name);
    void Keep(int number, const char* name);
    void KeepScene(const char* name);
    [[nodiscard]] QToolButton* BrowserButton(const char* name);
    void OpenMenu(const char* button, int submenu = -1);
    void CloseMenus();
    void OpenRowMenu();
    void Trigger(const char* button, const char* entry);

    QString pictures_;
    QString suffix_;
    QString problem_;
    std::vector<std::function<void()>> steps_;
    std::size_t next_ = 0;
};
