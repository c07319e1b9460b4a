// The store of installed assemblies: a folder that holds one folder per assembly name, which holds the
// installed copy under its original file name (<store>\My.Lib\My.Lib.dll).
#pragma once
#include <string>
#include <vector>

namespace gac {

constexpr wchar_t kStoreVariable[] = L"VELMORA_GAC_STORE";

// The folder named by VELMORA_GAC_STORE when it is set and not empty, else the folder "gac" beside this
// program. A full path without a trailing separator.
std::wstring StoreFolder();

enum class InstallOutcome { Added, AlreadyIdentical, Replaced };

struct Installed {
    std::wstring name; // the assembly name: the file's base name
    InstallOutcome outcome = InstallOutcome::Added;
};

class Store {
public:
    explicit Store(std::wstring folder) : folder_(std::move(folder)) {}

    // Copies the assembly file into the store. An identical copy (same file name, same bytes) already there is
    // kept; a different one fails unless force replaces it. A missing file or an unusable name fails.
    Installed Install(const std::wstring& assemblyFile, bool force);
    // Removes the named assembly; one that is not installed fails.
    void Uninstall(const std::wstring& name);
    // The installed assembly names with their file names ("My.Lib (My.Lib.dll)").
    std::vector<std::wstring> List() const;

private:
    std::wstring EntryFolder(const std::wstring& name) const;
    std::wstring folder_;
};

} // namespace gac
