// Replace in File: reads a text file in a code page, replaces literal text or one regular expression, writes the
// result to the output file and logs how many replacements were made.
#include "actions/actions.h"
#include "expression.h"
#include "literal.h"
#include "output.h"
#include "settings.h"
#include "fileutil/textfile.h"
#include "frame/messages.h"
#include "frame/step.h"

namespace tol {
namespace {

// The replacement count: none, uncounted (the expression changed the text) or the number of literal replacements.
constexpr long kNoReplacements = -1;
constexpr long kUncounted = 0;

constexpr unsigned kReplacementsMade = 41;   // "Replacement(s) made in file"
constexpr unsigned kNoReplacementsMade = 42; // "No replacements made in file"
constexpr unsigned kCountedReplacements = 58; // "%1!d! replacement(s) made in file"

std::wstring ReadInput(const ReplaceSettings& settings) {
    TextFileReader reader(settings.fileIn, settings.codePage);
    return reader.ReadAll();
}

long Replace(std::wstring& text, const ReplaceSettings& settings, bool literal) {
    if (literal) {
        const long count = ReplaceLiteral(text, settings.find, settings.replace, settings.caseSensitive);
        return count > 0 ? count : kNoReplacements;
    }
    return ReplaceExpression(text, settings.find, settings.replace, settings.caseSensitive) ? kUncounted
                                                                                            : kNoReplacements;
}

// An unchanged text is not written back over its own file.
[[nodiscard]] bool NeedsWriting(const ReplaceSettings& settings, long count) noexcept {
    return count != kNoReplacements || ::lstrcmpiW(settings.fileOut.c_str(), settings.fileIn.c_str()) != 0;
}

std::wstring CountMessage(long count) {
    if (count == kNoReplacements) return FormatResourceMessage(kNoReplacementsMade);
    if (count == kUncounted) return FormatResourceMessage(kReplacementsMade);
    return FormatResourceMessage(kCountedReplacements, {count});
}

} // namespace

// Every failure (input, expression, pairing, conversion) leaves before the output file is touched, except a
// failure of the write itself.
long RunFileReplace(IBuildRun* build, IBuildStep* step) {
    const ReplaceSettings settings = ReadReplaceSettings(build, step);
    std::wstring text = ReadInput(settings);
    const bool literal = GetStepBool(step, build, L"Literal");
    const long count = Replace(text, settings, literal);
    if (NeedsWriting(settings, count))
        WriteOutputFile(settings.fileOut, settings.codePage, text, settings.clearReadOnly);
    LogMessage(build, CountMessage(count));
    return StepSucceeded;
}

} // namespace tol
