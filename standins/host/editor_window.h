// The step editor's window: a tab for each page of the step's action, with OK, Cancel and Browse buttons.
#pragma once
#include "expander.h"
#include "names.h"
#include <memory>
#include <string>
#include <vector>

namespace host {

// The window class, by which tests find the editor from another process.
constexpr wchar_t kEditorWindowClass[] = L"VelmoraStepEditor";
// The editor's own controls; OK and Cancel are IDOK and IDCANCEL. The pages keep their templates' ids.
enum : int { kEditorTabId = 0x7F00, kEditorBrowseId = 0x7F01 };

// The step editor's extra tab that shows the step's "Text" in the script editor control (--script-page).
constexpr wchar_t kScriptPreviewProgId[] = L"VelmoraExt.ScriptPreviewUI";

enum class EditOutcome { Saved, Cancelled };

struct EditorSetup {
    std::wstring title;
    std::vector<std::wstring> pageProgIds;   // in tab order
    std::shared_ptr<PropertyMap> properties; // the step's: the pages load from it and save into it on OK
    bool newStep = false;                    // the pages show their defaults instead of the properties
    std::shared_ptr<const Expander> expander;
    std::wstring screenshotPrefix;           // not empty: PREFIX-<page class>.png of each page, then Cancelled
};

// Shows the window until OK (every page validated and saved into the properties) or Cancel. A page that cannot be
// created or fails a call throws, naming the page's ProgID.
EditOutcome RunEditor(const EditorSetup& setup);

} // namespace host
