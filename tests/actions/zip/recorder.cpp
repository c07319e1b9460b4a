// Built twice: as DZIP32.dll with RECORD_ZIP (entry point dzip) and as DUNZIP32.dll (entry point dunzip).
#include "recorder.h"
#include "actions/zip/unzip_block.h"
#include "actions/zip/zip_block.h"
#include <cstddef>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace {

struct Recording {
    std::vector<std::string> messages;
    std::vector<unsigned long> codes;
    RecorderScript script;
    int calls = 0;
    std::vector<unsigned char> block;
    std::map<std::size_t, std::optional<std::string>> texts;
    std::string answers;
};

Recording& State() {
    static Recording recording;
    return recording;
}

void Answer(const char* callback, long answer) {
    std::string& answers = State().answers;
    if (!answers.empty()) answers += ' ';
    answers += std::string(callback) + "=" + std::to_string(answer);
}

template <class Block>
void RecordText(const Block* block, std::size_t offset) {
    const char* text = *reinterpret_cast<const char* const*>(reinterpret_cast<const unsigned char*>(block) + offset);
    State().texts[offset] = text ? std::optional<std::string>(text) : std::nullopt;
}

// The callbacks in the scripted order: messages, cancel polls, one confirmation.
template <class Block>
void MakeCallbacks(const Block* b) {
    const Recording& r = State();
    for (std::size_t i = 0; i < r.messages.size(); ++i)
        Answer("message", b->message(r.messages[i].c_str(), r.codes[i], b->messageData));
    for (int i = 0; i < r.script.cancelPolls; ++i) Answer("cancel", b->cancel(i, r.script.cancelPolls, b->cancelData));
    if (r.script.confirm) Answer("confirm", b->confirm("file.txt", tol::kConfirmAdd, 10, 0, 0x21000000, 0x20, b->confirmData));
}

template <class Block>
long Record(const Block* block, std::initializer_list<std::size_t> textFields) {
    Recording& r = State();
    ++r.calls;
    r.block.assign(reinterpret_cast<const unsigned char*>(block), reinterpret_cast<const unsigned char*>(block) + sizeof(Block));
    r.texts.clear();
    r.answers.clear();
    for (const std::size_t offset : textFields) RecordText(block, offset);
    MakeCallbacks(block);
    return r.script.result;
}

} // namespace

extern "C" {

#ifdef RECORD_ZIP
long __stdcall dzip(tol::ZipCommandBlock* block) {
    using B = tol::ZipCommandBlock;
    return Record(block, {offsetof(B, zipFile), offsetof(B, item), offsetof(B, comment), offsetof(B, include),
                          offsetof(B, exclude)});
}
#else
long __stdcall dunzip(tol::UnzipCommandBlock* block) {
    using B = tol::UnzipCommandBlock;
    return Record(block, {offsetof(B, zipFile), offsetof(B, files), offsetof(B, destination)});
}
#endif

void __stdcall RecorderSetScript(const RecorderScript* script) {
    Recording& r = State();
    r.script = *script;
    r.messages.assign(script->messages, script->messages + script->messageCount);
    r.codes.assign(script->codes, script->codes + script->messageCount);
}

const unsigned char* __stdcall RecorderBlock(int* calls) {
    *calls = State().calls;
    return State().block.data();
}

const char* __stdcall RecorderText(std::size_t fieldOffset) {
    const auto found = State().texts.find(fieldOffset);
    return found == State().texts.end() || !found->second ? nullptr : found->second->c_str();
}

const char* __stdcall RecorderAnswers() { return State().answers.c_str(); }

} // extern "C"
