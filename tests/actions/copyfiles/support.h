// What the Copy Files tests share: trees written and read back in a short notation, snapshots of everything a
// copy may change, a Copy Files step with the options of a new step, the action run through its component,
// a build that stops itself at a chosen log line, and a file held open by another process.
#pragma once
#include "host_doubles.h"
#include "frame/handles.h"
#include <windows.h>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace copytest {

// Trees as text: items in name order separated by blanks, a folder as "name\", a file as "name=content";
// "a.txt=A sub\ sub\b.txt=BB". MakeTree takes the same notation and creates folders as needed.
void MakeTree(const std::wstring& root, std::string_view items);
std::string TreeText(const std::wstring& root);

// Everything about one item that a copy could change.
struct ItemState {
    DWORD attributes = 0;
    FILETIME created{}, written{};
    std::string bytes;
    bool operator==(const ItemState& other) const;
};
std::map<std::wstring, ItemState> Snapshot(const std::wstring& root);

FILETIME WriteTime(const std::wstring& path);
void SetWriteTime(const std::wstring& path, const FILETIME& time);
FILETIME AddSeconds(const FILETIME& time, long long seconds);

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

// A build that records its lines and sets its own stop event when a line starting with stopAt is logged,
// then gives the run's stop watch a moment to see it.
class StoppingBuild final : public test::StackObject<IBuildRun> {
public:
    explicit StoppingBuild(std::wstring stopAt);
    std::vector<std::wstring> log;
    HANDLE stopEvent() const { return stop_.get(); }

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP GetTextExpander(ITextExpander** expander) override;
    STDMETHODIMP RunCommandLine(BSTR, BSTR, VARIANT*, long, BSTR, long, long, VARIANT_BOOL, BSTR, long*) override;
    STDMETHODIMP LogMessage(BSTR text, VARIANT_BOOL) override;
    STDMETHODIMP GetStopEvent(long* event) override;

private:
    std::wstring stopAt_;
    tol::unique_event stop_;
};

// The folder of the test programs (bin/).
std::wstring BinFolder();

// Another process (copyfiles-holdopen.exe) holds a file open without sharing, for at most a while.
class HeldOpen {
public:
    HeldOpen(const std::wstring& path, DWORD milliseconds);
    ~HeldOpen();
    // Tells the other process to let go (when it still holds the file) and waits until it has; its exit code
    // (0 when it held the file).
    DWORD Release();

private:
    tol::unique_event go_;
    tol::unique_process process_;
};

} // namespace copytest
