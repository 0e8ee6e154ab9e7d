// The toolkit's own texts, those of file dialogs, message buttons and the menus of fields, in the dialogs' language:
// from the toolkit's catalogue where one is installed, else from a table of ours.
#pragma once

namespace partkeep {

// While one of these lives the texts count, for the host's windows as well. The last one takes them back, since this
// library may be unloaded before the toolkit.
class CToolkitTexts {
public:
    CToolkitTexts();
    ~CToolkitTexts();
    CToolkitTexts(const CToolkitTexts&) = delete;
    CToolkitTexts& operator=(const CToolkitTexts&) = delete;
};

} // namespace partkeep
