#include "pages.h"
#include "action_pages.h"

namespace tol {
namespace {

template <class Page>
std::unique_ptr<PropertyPage> Make() {
    return std::make_unique<Page>();
}

struct PageClass {
    std::wstring_view name;
    std::unique_ptr<PropertyPage> (*make)();
};

constexpr PageClass kPageClasses[] = {
    {L"WriteFileUI", Make<WriteFileUI>},
    {L"WriteINIUI", Make<WriteINIUI>},
    {L"WriteRegUI", Make<WriteRegUI>},
    {L"CopyFilesUI", Make<CopyFilesUI>},
    {L"CopyFilesOptUI", Make<CopyFilesOptUI>},
    {L"FileReplaceUI", Make<FileReplaceUI>},
    {L"WaitUI", Make<WaitUI>},
    {L"ServiceUI", Make<ServiceUI>},
    {L"GACInstallUI", Make<GACInstallUI>},
    {L"COMPlusAppUI", Make<COMPlusAppUI>},
    {L"COMPlusCompUI", Make<COMPlusCompUI>},
    {L"COMPlusPropUI", Make<COMPlusPropUI>},
    {L"ZipFilesUI", Make<ZipFilesUI>},
    {L"ZipFilesOptUI", Make<ZipFilesOptUI>},
    {L"UnzipFilesUI", Make<UnzipFilesUI>},
    {L"ScriptPreviewUI", Make<ScriptPreviewUI>},
};

} // namespace

std::unique_ptr<PropertyPage> CreatePropertyPage(std::wstring_view className) {
    for (const PageClass& page : kPageClasses) {
        if (page.name == className) return page.make();
    }
    return nullptr;
}

} // namespace tol
