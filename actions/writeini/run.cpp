// Write INI: sets or deletes one key, or deletes a whole section, with the platform's INI writer.
#include "actions/actions.h"
#include "frame/step.h"
#include "settings.h"

namespace tol {
namespace {

constexpr unsigned kErrorWritingIniFile = 47; // "Error writing to INI file: %1"

// No key removes the whole section; no value removes the key. Section and file are never null.
[[nodiscard]] bool WriteIniEntry(const IniSettings& settings) noexcept {
    const wchar_t* key = settings.valueName.empty() ? nullptr : settings.valueName.c_str();
    const wchar_t* value = settings.deleteEntry ? nullptr : settings.valueData.c_str();
    return ::WritePrivateProfileStringW(settings.section.c_str(), key, value, settings.filename.c_str()) != FALSE;
}

} // namespace

long RunWriteIni(IBuildRun* build, IBuildStep* step) {
    const IniSettings settings = ReadIniSettings(build, step);
    if (!WriteIniEntry(settings)) return LogLastErrorAndFail(build, kErrorWritingIniFile);
    return StepSucceeded;
}

} // namespace tol
