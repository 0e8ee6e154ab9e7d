// What a browser session tells the pane that draws it. Calls come on the session's thread, often from inside
// a call of the component: a pane changes its widgets then, and fires no events and runs none.
#pragma once

#include "partlibrary/session/view_state.h"

#include <QString>

#include <cstddef>
#include <cstdint>

namespace partkeep {

// A copy of parts that are asked for one after the other.
struct CopyProgress {
    QString part;
    std::size_t number = 1; // which of the selected ones, from 1
    std::size_t of = 1;
    qint64 bytes = 0; // of all that were copied since the first one
};

class ISessionPane {
public:
    virtual ~ISessionPane() = default;

    virtual void ServersChanged() = 0;   // the table, the cursor, the current server or whether it is reached
    virtual void FolderChanged() = 0;    // the current folder; rows and selection have changed with it
    virtual void PartListChanged() = 0;  // rows must be read again: refresh, filter, order, search or unit
    virtual void SelectionChanged() = 0; // not by the pane's own Select
    virtual void ProblemChanged() = 0;   // the line for what cannot be reached or read

    virtual void OpenFolderSelection() {} // a folder is about to be restored

    // Keyboard focus by the contract's codes; nonzero while a Tab code keeps the focus inside.
    virtual std::int16_t MoveFocus(std::int16_t /*code*/) { return 0; }

    virtual void ApplyViewState(const ViewState& state) = 0;
    virtual void CaptureViewState(ViewState& state) = 0;

    // Around and during each copy of a part's files. A pane may repaint a line in place; it must not run events.
    virtual void CopyStarted(const CopyProgress& /*copy*/) {}
    virtual void CopyProgressed(const CopyProgress& /*copy*/) {}
    virtual void CopyEnded() {}
};

} // namespace partkeep
