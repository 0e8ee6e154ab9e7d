// What the part browser's pane says, in the three languages of the component.
#pragma once

#include "desktop/interface_language.h"

#include <QString>

namespace partkeep {

enum class PaneText {
    Browser, // the pane as a whole, for a screen reader
    Servers,
    Parts,
    Search,
    SearchHint,
    ClearSearch,
    Places,
    Favourites,
    Recent,
    AddFavourite,
    RemoveFavourite,
    NoPlaces,
    Columns,
    Export,
    ExportTitle,
    ExportFilter,
    ExportFailed,
    Retry,
    Name,
    ThicknessMetric,
    ThicknessInch,
    Material,
    Machine,
    Comment,
    Thumbnails,
    SortUp,
    SortDown,
    MoveLeft,
    MoveRight,
    Wider,
    Narrower,
    WiderTree,
    NarrowerTree,
    PartCount,      // %1 parts
    PartCountSoFar, // %1 parts, and more being found
    SelectedCount,  // %1
    Copying,        // %1 part, %2 which one, %3 of how many, %4 bytes so far
    PartGone,
    EmptyNoServers, // %1 folder
    EmptyNoFolder,  // no library folder is configured
    EmptyChooseServer,
    EmptyFolder,
    EmptyFilter,
    EmptySearch,       // %1
    EmptySearchFolder, // %1; the server may have some
    ServerGone,        // %1 server
    ServerBusy,
    ServerSilent,
    ServerBars,  // %1 server, %2 reason, in the words of who refused
    ServerTwice, // %1 server
    ServerUnfinished,
    ServerReplaced,
    Since,          // %1 time
    AsOf,           // %1 time
    EntriesRefused, // %1 how many
    ServerSlow,     // %1 server
    ServerDamaged,
    ServerForeign,
    ServerRefused,
    FolderGone,
    PartMissing,
    CopyFailed, // %1 reason
    OtherTrouble,
    SearchServerHint,
    ScopeFolder,
    ScopeServer,
    ScopeTip,
    Narrow,
    NarrowAll,
    NarrowNothing,
    NarrowMore, // values than can be chosen from
    EmptyNarrowed,
    ResultCount,      // %1 parts found in the whole server
    ResultCountSoFar, // %1
    ResultHelp,
    InFolder, // %1 part, %2 folder
    Folder,
    SelectToo,
    Unselect,
    CopyNames,
    OpenFolder,
    ExportSelection,
    ExportName, // of a file that is proposed
    ExportDone, // %1 parts, %2 file
    NoPictures,
    SmallPictures,
    MediumPictures,
    LargePictures,
    ArrangeFavourites,
    FavouriteAdded,   // %1 place
    FavouriteRemoved, // %1 place
    FavouritesFull,
    Up,
    Down,
    Rename,
    Remove,
    Close,
    Keys,
    KeysHelp,
    Count
};

using PaneLanguage = InterfaceLanguage;

[[nodiscard]] QString PaneString(PaneText text, PaneLanguage language);

} // namespace partkeep
