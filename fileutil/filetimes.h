// File times: reading them, turning them into local OLE dates, and comparing two files by time and size.
#pragma once
#include <windows.h>
#include <string>

namespace tol {

// The date FileTimeToLocalDate gives when a conversion fails: one day before the earliest valid date.
constexpr double kInvalidLocalDate = -657435.0;

// Reads the requested times (null outputs are skipped; requested ones are zeroed first). False, with the
// platform's error code, when the file cannot be opened for reading or its times cannot be read.
[[nodiscard]] bool GetFileTimes(const std::wstring& path, FILETIME* lastWrite, FILETIME* creation = nullptr,
                                FILETIME* lastAccess = nullptr) noexcept;

// The local time as an OLE automation date in whole seconds; kInvalidLocalDate when it cannot be converted.
[[nodiscard]] double FileTimeToLocalDate(const FILETIME& time) noexcept;

// Whether two files count as the same. byTime: last-write times, local and in whole seconds, at most 2 seconds
// apart (the resolution of FAT); a time that cannot be read or lies outside the years 100 to 9999 differs.
// bySize: equal 64-bit sizes; a file that cannot be opened counts as size 0, a failing size query differs.
// With both flags clear the files are always the same.
[[nodiscard]] bool CompareFiles(const std::wstring& first, const std::wstring& second, bool byTime,
                                bool bySize) noexcept;

} // namespace tol
