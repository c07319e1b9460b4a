// The library's 27 component classes and the twelve action catalog records, as data.
#pragma once
#include "VelmoraSvr.h"
#include <windows.h>

namespace tol {

using RunRoutine = long (*)(IBuildRun* build, IBuildStep* step);

enum class ClassKind { Action, Page };

struct ClassEntry {
    const CLSID* clsid;
    const wchar_t* name;      // class name; the ProgID is "VelmoraExt." followed by it
    ClassKind kind;
    RunRoutine run;           // actions only
};

struct CatalogRecord {
    const wchar_t* name;           // action name, the catalog subkey
    const wchar_t* category;
    UINT descriptionId;            // string-table id of the description
    const wchar_t* action;         // class names, without the ProgID prefix
    const wchar_t* page1;
    const wchar_t* page2;          // null when the action has one page
    const wchar_t* extensions;     // ";"-separated, null when none
    const wchar_t* verb;           // shell verb text for the extensions, null when none
    DWORD helpContext;
    const wchar_t* defaultProperty;
    int bitmap;
};

extern const ClassEntry kClasses[27];
// A page class that the server creates but does not register: the step editor's script preview.
extern const ClassEntry kPreviewPage;
extern const CLSID CLSID_ScriptPreviewUI;
extern const CatalogRecord kCatalog[12];

constexpr const wchar_t kProgIdPrefix[] = L"VelmoraExt.";
constexpr const wchar_t kCatalogKey[] = L"Software\\Tolvane\\Velmora\\Actions";
constexpr const wchar_t kHostExecutable[] = L"Velmora.exe";

// One of kClasses, or kPreviewPage.
const ClassEntry* FindClass(REFCLSID clsid) noexcept;
// The catalog record whose first page is this class, or null.
const CatalogRecord* RecordOfFirstPage(const ClassEntry& entry) noexcept;

} // namespace tol
