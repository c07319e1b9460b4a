#include "editor.h"
#include "catalog.h"
#include "editor_window.h"
#include "script.h"
#include "script_writer.h"

namespace host {
namespace {

std::wstring FileName(const std::wstring& path) {
    const size_t separator = path.find_last_of(L"\\/:");
    return separator == std::wstring::npos ? path : path.substr(separator + 1);
}

std::vector<std::wstring> PagesOf(const CatalogEntry& entry) {
    std::vector<std::wstring> pages;
    for (const std::wstring* progId : {&entry.page1ProgId, &entry.page2ProgId})
        if (!progId->empty()) pages.push_back(*progId);
    if (pages.empty()) throw ScriptError(L"the action \"" + entry.name + L"\" has no pages in " + CatalogLocation());
    return pages;
}

std::wstring KnownActions(const std::vector<CatalogEntry>& catalog) {
    return catalog.empty() ? L"no actions are registered under " + CatalogLocation()
                           : L"the known actions are: " + ActionNames(catalog);
}

// The step's action, properties and place in the script; the window title names the step.
struct EditedStep {
    const CatalogEntry* entry = nullptr;
    StepTarget target;
    std::shared_ptr<PropertyMap> properties = std::make_shared<PropertyMap>();
    std::wstring title;
};

EditedStep FindStep(const Options& options, Script& script, const std::vector<CatalogEntry>& catalog) {
    EditedStep edited;
    const std::wstring file = FileName(options.script);
    if (options.editStep == 0) {
        edited.entry = FindAction(catalog, options.newAction);
        if (!edited.entry) throw UsageError(L"unknown action \"" + options.newAction + L"\"; " + KnownActions(catalog));
        edited.target.action = edited.entry->name;
        edited.title = L"New step: " + edited.entry->name + L" - " + file;
        return edited;
    }
    if (options.editStep > script.steps.size())
        throw UsageError(options.script + L" has " + std::to_wstring(script.steps.size()) + L" step" +
                         (script.steps.size() == 1 ? L"" : L"s") + L": there is no step " + std::to_wstring(options.editStep));
    ScriptStep& step = script.steps[options.editStep - 1];
    edited.entry = FindAction(catalog, step.action);
    if (!edited.entry)
        throw ScriptError(options.script + L": " + StepTitle(options.editStep, step) + L": unknown action \"" + step.action +
                          L"\"; " + KnownActions(catalog));
    edited.target.index = options.editStep - 1;
    *edited.properties = std::move(step.properties);
    edited.title = L"Step " + std::to_wstring(options.editStep) + L": " + step.action + L" - " + file;
    return edited;
}

} // namespace

int EditScriptStep(const Options& options) {
    Script script = LoadScript(options.script);
    const std::vector<CatalogEntry> catalog = ReadCatalog();
    EditedStep edited = FindStep(options, script, catalog);
    EditorSetup setup;
    setup.title = edited.title;
    setup.pageProgIds = PagesOf(*edited.entry);
    if (options.scriptPage) setup.pageProgIds.push_back(kScriptPreviewProgId);
    setup.properties = edited.properties;
    setup.newStep = options.editStep == 0;
    setup.expander = std::make_shared<const Expander>(std::move(script.variables), options.variables);
    setup.screenshotPrefix = options.screenshotPrefix;
    const EditOutcome outcome = RunEditor(setup);
    if (!options.screenshotPrefix.empty()) return 0;
    if (outcome != EditOutcome::Saved) return kExitCancelled;
    WriteStepProperties(options.script, edited.target, *edited.properties);
    return 0;
}

} // namespace host
