#include "classes.h"
#include "actions/actions.h"
#include "VelmoraExt.h"
#include <cwchar>

namespace tol {

// Registration order.
const ClassEntry kClasses[27] = {
    {&CLSID_WriteRegUI, L"WriteRegUI", ClassKind::Page, nullptr},
    {&CLSID_WriteRegAction, L"WriteRegAction", ClassKind::Action, RunWriteRegistry},
    {&CLSID_WriteFileUI, L"WriteFileUI", ClassKind::Page, nullptr},
    {&CLSID_WriteFileAction, L"WriteFileAction", ClassKind::Action, RunWriteFile},
    {&CLSID_WriteINIUI, L"WriteINIUI", ClassKind::Page, nullptr},
    {&CLSID_WriteINIAction, L"WriteINIAction", ClassKind::Action, RunWriteIni},
    {&CLSID_WaitUI, L"WaitUI", ClassKind::Page, nullptr},
    {&CLSID_WaitAction, L"WaitAction", ClassKind::Action, RunWait},
    {&CLSID_ServiceUI, L"ServiceUI", ClassKind::Page, nullptr},
    {&CLSID_ServiceAction, L"ServiceAction", ClassKind::Action, RunService},
    {&CLSID_CopyFilesUI, L"CopyFilesUI", ClassKind::Page, nullptr},
    {&CLSID_CopyFilesOptUI, L"CopyFilesOptUI", ClassKind::Page, nullptr},
    {&CLSID_CopyFilesAction, L"CopyFilesAction", ClassKind::Action, RunCopyFiles},
    {&CLSID_GACInstallUI, L"GACInstallUI", ClassKind::Page, nullptr},
    {&CLSID_GACInstallAction, L"GACInstallAction", ClassKind::Action, RunGacInstall},
    {&CLSID_FileReplaceUI, L"FileReplaceUI", ClassKind::Page, nullptr},
    {&CLSID_FileReplaceAction, L"FileReplaceAction", ClassKind::Action, RunFileReplace},
    {&CLSID_COMPlusAppUI, L"COMPlusAppUI", ClassKind::Page, nullptr},
    {&CLSID_COMPlusAppAction, L"COMPlusAppAction", ClassKind::Action, RunComPlusApplication},
    {&CLSID_COMPlusCompUI, L"COMPlusCompUI", ClassKind::Page, nullptr},
    {&CLSID_COMPlusPropUI, L"COMPlusPropUI", ClassKind::Page, nullptr},
    {&CLSID_COMPlusCompAction, L"COMPlusCompAction", ClassKind::Action, RunComPlusComponent},
    {&CLSID_ZipFilesUI, L"ZipFilesUI", ClassKind::Page, nullptr},
    {&CLSID_ZipFilesOptUI, L"ZipFilesOptUI", ClassKind::Page, nullptr},
    {&CLSID_ZipFilesAction, L"ZipFilesAction", ClassKind::Action, RunZipFiles},
    {&CLSID_UnzipFilesUI, L"UnzipFilesUI", ClassKind::Page, nullptr},
    {&CLSID_UnzipFilesAction, L"UnzipFilesAction", ClassKind::Action, RunUnzipFiles},
};

const CatalogRecord kCatalog[12] = {
    {L"Write Registry", L"Miscellaneous", 9, L"WriteRegAction", L"WriteRegUI", nullptr, nullptr, nullptr, 519, L"SubKey", 104},
    {L"Write File", L"Files", 11, L"WriteFileAction", L"WriteFileUI", nullptr, nullptr, nullptr, 518, L"Filename", 114},
    {L"Write INI", L"Files", 46, L"WriteINIAction", L"WriteINIUI", nullptr, L".ini", L"Write with &Velmora", 529, L"Filename",
     120},
    {L"Wait", L"Miscellaneous", 12, L"WaitAction", L"WaitUI", nullptr, nullptr, nullptr, 517, L"Criteria", 115},
    {L"Service", L"Server", 20, L"ServiceAction", L"ServiceUI", nullptr, nullptr, nullptr, 523, L"Service", 116},
    {L"Copy Files", L"Files", 21, L"CopyFilesAction", L"CopyFilesUI", L"CopyFilesOptUI", nullptr, nullptr, 524, L"SourceDir",
     117},
    {L"GAC Install", L"Server", 32, L"GACInstallAction", L"GACInstallUI", nullptr, nullptr, nullptr, 525, L"Filename", 118},
    {L"Replace in File", L"Files", 40, L"FileReplaceAction", L"FileReplaceUI", nullptr, nullptr, nullptr, 527, L"FileIn", 119},
    {L"COM+ Application", L"Server", 50, L"COMPlusAppAction", L"COMPlusAppUI", L"COMPlusPropUI", nullptr, nullptr, 530,
     L"Application", 121},
    {L"COM+ Component", L"Server", 51, L"COMPlusCompAction", L"COMPlusCompUI", L"COMPlusPropUI", nullptr, nullptr, 531,
     L"Component", 122},
    {L"ZIP Files", L"Files", 33, L"ZipFilesAction", L"ZipFilesUI", L"ZipFilesOptUI", nullptr, nullptr, 535, L"Dest", 123},
    {L"UNZIP Files", L"Files", 62, L"UnzipFilesAction", L"UnzipFilesUI", nullptr, nullptr, nullptr, 536, L"Source", 124},
};

// {ED2F7B0F-8CED-45C8-95AE-20069A030A62}
const CLSID CLSID_ScriptPreviewUI = {0xed2f7b0f, 0x8ced, 0x45c8, {0x95, 0xae, 0x20, 0x06, 0x9a, 0x03, 0x0a, 0x62}};
const ClassEntry kPreviewPage = {&CLSID_ScriptPreviewUI, L"ScriptPreviewUI", ClassKind::Page, nullptr};

const ClassEntry* FindClass(REFCLSID clsid) noexcept {
    for (const ClassEntry& entry : kClasses)
        if (*entry.clsid == clsid) return &entry;
    return clsid == CLSID_ScriptPreviewUI ? &kPreviewPage : nullptr;
}

const CatalogRecord* RecordOfFirstPage(const ClassEntry& entry) noexcept {
    for (const CatalogRecord& record : kCatalog)
        if (std::wcscmp(record.page1, entry.name) == 0) return &record;
    return nullptr;
}

} // namespace tol
