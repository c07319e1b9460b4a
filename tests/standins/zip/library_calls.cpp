#include "library_calls.h"
#include "common/file_source.h"
#include "format/central_directory.h"
#include "format/entry_data.h"
#include "format/io.h"
#include "frame/handles.h"
#include <windows.h>
#include <stdexcept>

namespace ziptest {
namespace {

long __stdcall OnCancel(long, long, void* user) {
    Callbacks& c = *static_cast<Callbacks*>(user);
    const int poll = c.polls++;
    return c.cancelFromPoll >= 0 && poll >= c.cancelFromPoll ? 1 : 0;
}

long __stdcall OnMessage(const char* text, unsigned long code, void* user) {
    Callbacks& c = *static_cast<Callbacks*>(user);
    (code == 100 ? c.files : c.notes).push_back(text ? text : "<null>");
    return 0;
}

long __stdcall OnConfirm(const char* name, long operation, unsigned long, unsigned long, unsigned long, unsigned long,
                         void* user) {
    Callbacks& c = *static_cast<Callbacks*>(user);
    c.confirmations.push_back(std::to_string(operation) + " " + name);
    return c.confirmAnswer;
}

template <class Block>
long Call(const wchar_t* library, const char* entry, Block& block) {
    const tol::unique_module module(::LoadLibraryW(library));
    const FARPROC function = module ? ::GetProcAddress(module.get(), entry) : nullptr;
    if (!function) throw std::runtime_error("the library cannot be loaded");
    return reinterpret_cast<long(__stdcall*)(Block*)>(function)(&block);
}

} // namespace

long CallZip(const ZipRequest& r, Callbacks& c) {
    tol::ZipCommandBlock b{};
    b.size = r.size;
    b.function = r.function;
    b.zipFile = r.zipFile.c_str();
    b.item = r.item.c_str();
    b.cancel = OnCancel;
    b.message = OnMessage;
    b.confirm = OnConfirm;
    b.cancelData = b.messageData = b.confirmData = &c;
    b.recurse = r.recurse;
    b.compression = r.compression;
    b.fileMessages = b.folderEntries = b.allowZip64 = b.extendedTimes = 1;
    b.grow = r.grow;
    b.noPaths = r.noPaths;
    b.hasComment = r.comment ? 1 : 0;
    b.comment = r.comment ? r.comment->c_str() : "";
    b.hasInclude = r.include.empty() ? 0 : 1;
    b.include = r.include.c_str();
    b.hasExclude = r.exclude.empty() ? 0 : 1;
    b.exclude = r.exclude.c_str();
    b.hiddenFiles = r.hidden;
    b.options = r.options;
    return Call(L"DZIP32.dll", "dzip", b);
}

long CallUnzip(const UnzipRequest& r, Callbacks& c) {
    tol::UnzipCommandBlock b{};
    b.size = sizeof b;
    b.function = r.function;
    b.zipFile = r.zipFile.c_str();
    b.files = r.files.c_str();
    b.destination = r.destination.c_str();
    b.freshen = r.freshen;
    b.update = r.update;
    b.restoreTimes = 1;
    b.dropFolders = r.dropFolders;
    b.recurse = r.recurse;
    b.message = OnMessage;
    b.cancel = OnCancel;
    b.confirm = OnConfirm;
    b.messageData = b.cancelData = b.confirmData = &c;
    b.options = r.options;
    return Call(L"DUNZIP32.dll", "dunzip", b);
}

std::string Quoted(const std::string& text) {
    std::string quoted;
    for (const char ch : text) quoted += ch == '"' ? std::string("\\\"") : std::string(1, ch);
    if (text.find(' ') == std::string::npos) return quoted;
    if (!quoted.empty() && quoted.back() == '\\') quoted += '\\';
    return '"' + quoted + '"';
}

std::string Narrow(const std::wstring& text) {
    std::string narrow(text.size() * 2 + 1, '\0');
    narrow.resize(::WideCharToMultiByte(CP_ACP, 0, text.c_str(), static_cast<int>(text.size()), narrow.data(),
                                        static_cast<int>(narrow.size()), nullptr, nullptr));
    return narrow;
}

std::string Compressible(std::size_t size) {
    std::string text;
    for (int line = 0; text.size() < size; ++line) text += "built module " + std::to_string(line % 31) + "\r\n";
    return text.substr(0, size);
}

std::string Put32At(std::string bytes, std::size_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes[at + i] = static_cast<char>(value >> (8 * i));
    return bytes;
}

void SetModified(const std::wstring& path, std::int64_t unixSeconds) {
    const std::uint64_t ticks = static_cast<std::uint64_t>(unixSeconds + 11644473600LL) * 10000000u;
    const FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    const tol::unique_file file(::CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file || !::SetFileTime(file.get(), nullptr, nullptr, &time)) throw std::runtime_error("cannot set a file's time");
}

std::vector<std::string> Listing::Names() const {
    std::vector<std::string> names;
    for (const Listed& e : entries) names.push_back(e.name);
    return names;
}

const Listed* Listing::Find(const std::string& name) const {
    for (const Listed& e : entries)
        if (e.name == name) return &e;
    return nullptr;
}

Listing ReadBack(const std::wstring& zipFile) {
    Listing listing;
    zipwin::FileSource source;
    if (!source.Open(zipFile)) return listing;
    zipformat::Archive archive;
    listing.status = static_cast<int>(zipformat::ReadArchive(source, archive));
    listing.comment = archive.comment;
    zipformat::EntryExtractor extractor;
    for (const zipformat::Entry& e : archive.entries) {
        zipformat::MemorySink sink;
        const zipformat::Status status = extractor.Extract(source, archive, e, sink, nullptr);
        const std::string failure = "<error " + std::to_string(static_cast<int>(status)) + ">";
        const std::string data = status == zipformat::Status::Ok ? sink.bytes : failure;
        listing.entries.push_back({e.name, e.method, e.compressedSize, e.IsFolder(), data});
    }
    return listing;
}

} // namespace ziptest
