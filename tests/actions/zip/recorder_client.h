// The test's side of the recorders: scripting the next call and reading back what the last call received.
#pragma once
#include "recorder.h"
#include "frame/handles.h"
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace ziptest {

struct ScriptedMessage {
    std::string text;
    unsigned long code;
};

class Recorder {
public:
    // The recorder that stands in for library (L"DZIP32.dll" or L"DUNZIP32.dll"), loaded from the test's folder.
    explicit Recorder(const wchar_t* library);

    void Script(long result, const std::vector<ScriptedMessage>& messages = {}, int cancelPolls = 0, bool confirm = false);
    int Calls() const;
    // The last block, copied as the 64-bit layout.
    template <class Block>
    Block LastBlock() const {
        Block block;
        int calls = 0;
        std::memcpy(&block, block_(&calls), sizeof block);
        return block;
    }
    std::optional<std::string> Text(std::size_t fieldOffset) const;
    std::string Answers() const { return answers_(); }

private:
    tol::unique_module module_;
    RecorderSetScriptFn setScript_;
    RecorderBlockFn block_;
    RecorderTextFn text_;
    RecorderAnswersFn answers_;
};

} // namespace ziptest
