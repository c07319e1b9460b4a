#include "plan.h"
#include "common/file_times.h"
#include "common/text.h"
#include <algorithm>
#include <unordered_map>

namespace zipper {
namespace {

constexpr size_t kNone = static_cast<size_t>(-1);

std::wstring KeyOf(const zipformat::Entry& entry) {
    std::wstring name = zipwin::ToWide(entry.name, zipwin::NameCodePage(entry, zipwin::kOemNames));
    std::replace(name.begin(), name.end(), L'\\', L'/');
    return zipwin::FoldCase(name);
}

// A file is newer than its entry by the entry's UTC time when it has one, else by DOS time (two-second steps).
bool IsNewer(const SourceFile& file, const zipformat::Entry& entry) {
    if (entry.modified) return zipwin::ToUnixSeconds(file.modified) > *entry.modified;
    return zipwin::ToDosDateTime(file.modified) > entry.dosDateTime;
}

// For each existing entry, the file that replaces it (kNone when none); files that are new go to added.
std::vector<size_t> Match(std::int32_t function, const zipformat::Archive* existing, const std::vector<SourceFile>& files,
                          std::vector<size_t>& added) {
    std::unordered_map<std::wstring, size_t> byName;
    const size_t count = existing ? existing->entries.size() : 0;
    for (size_t i = 0; i < count; ++i) byName.insert_or_assign(KeyOf(existing->entries[i]), i);
    std::vector<size_t> replacedBy(count, kNone);
    for (size_t j = 0; j < files.size(); ++j) {
        const auto found = byName.find(zipwin::FoldCase(files[j].name));
        if (found == byName.end()) {
            if (function != tol::ZipFreshen) added.push_back(j);
        } else if (!files[j].folder && (function == tol::ZipAdd || IsNewer(files[j], existing->entries[found->second]))) {
            replacedBy[found->second] = j;
        }
    }
    return replacedBy;
}

} // namespace

Plan MakePlan(std::int32_t function, const zipformat::Archive* existing, const std::vector<SourceFile>& files,
              bool growing) {
    std::vector<size_t> added;
    const std::vector<size_t> replacedBy = Match(function, existing, files, added);
    Plan plan;
    std::vector<PlanStep> replacements;
    for (size_t i = 0; i < replacedBy.size(); ++i) {
        if (replacedBy[i] == kNone) {
            plan.steps.push_back({growing ? StepKind::Keep : StepKind::Copy, i});
        } else {
            (growing ? replacements : plan.steps).push_back({StepKind::Add, replacedBy[i], true});
            ++plan.additions;
        }
    }
    plan.steps.insert(plan.steps.end(), replacements.begin(), replacements.end());
    for (const size_t j : added) plan.steps.push_back({StepKind::Add, j});
    plan.additions += added.size();
    return plan;
}

} // namespace zipper
