// What the Copy Files tests share: trees written and read back in a short notation, a Copy Files step with the
// options of a new step, the action run through its component, and a file held open by another process.
#pragma once
#include "host_doubles.h"
#include "frame/handles.h"
#include <windows.h>
#include <string>
#include <string_view>
#include <vector>

namespace copytest {

// Trees as text: items in name order separated by blanks, a folder as "name\", a file as "name=content";
// "a.txt=A sub\ sub\b.txt=BB". MakeTree takes the same notation, creates folders as needed and gives every file
// the same write time: a file made alike in two trees is up to date.
void MakeTree(const std::wstring& root, std::string_view items);
// With details, each item also shows its attributes and times: an unchanged text means an untouched tree.
std::string TreeText(const std::wstring& root, bool details = false);

// Moves a file's write time by the seconds.
void ShiftWriteTime(const std::wstring& path, long long seconds);

// A step with the options the step editor gives a new Copy Files step, then the given ones: blank-separated
// "Name" (true), "-Name" (false), "Name=123" (integer) or "Name=text" (';' starts a new line in a text).
void SetCopyStep(test::TestStep& step, const std::wstring& source, const std::wstring& dest, std::wstring_view options = {});

struct Execution {
    HRESULT hr;
    long status;  // 0x5A5A when Execute did not write it
};
// Runs the step through the Copy Files component as the host does.
Execution ExecuteCopyFiles(IBuildRun* build, test::TestStep& step);

// The log with its lines joined by "\n".
std::wstring Joined(const std::vector<std::wstring>& lines);
// The lines that start with a prefix.
std::vector<std::wstring> LinesStarting(const std::vector<std::wstring>& lines, std::wstring_view prefix);

// Another process (copyfiles-holdopen.exe) holds a file open without sharing, for at most a while.
class HeldOpen {
public:
    HeldOpen(const std::wstring& path, DWORD milliseconds);
    ~HeldOpen() { (void)Release(); }
    // Tells the other process to let go and waits until it has; its exit code (0 when it held the file).
    DWORD Release();

private:
    tol::unique_event go_;
    tol::unique_process process_;
};

} // namespace copytest
