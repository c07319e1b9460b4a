// The result codes of the two archive libraries: their texts and what each means to the step.
#pragma once
#include <string>

namespace tol {

enum class ResultKind { Success, Cancelled, Error };

struct ResultTable {
    const wchar_t* library;     // the DLL's name, for a code that the table does not know
    const char* const* texts;   // indexed by the code
    long count;
    long successCodes[2];
    long cancelCode;

    ResultKind Classify(long code) const noexcept;
    // The table's text (which can be empty); a code outside the table gets a text that names the library and
    // the code.
    std::wstring Text(long code) const;
};

extern const ResultTable kZipResults;    // 22 texts, codes 0 to 21
extern const ResultTable kUnzipResults;  // 51 texts, codes 0 to 50

} // namespace tol
