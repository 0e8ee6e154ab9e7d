// The line below the list, with a bar under its text while something is on its way.
#pragma once

#include <QLabel>

namespace partkeep {

class CStatusLine : public QLabel {
public:
    CStatusLine();

    void ShowShare(double share); // of what there is to do; 0: no bar

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double share_ = 0;
};

} // namespace partkeep
