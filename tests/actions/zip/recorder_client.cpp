#include "recorder_client.h"
#include <windows.h>
#include <stdexcept>

namespace ziptest {
namespace {

template <class Fn>
Fn Entry(HMODULE module, const char* name) {
    const FARPROC entry = ::GetProcAddress(module, name);
    if (!entry) throw std::runtime_error(std::string("the recorder lacks ") + name);
    return reinterpret_cast<Fn>(entry);
}

} // namespace

Recorder::Recorder(const wchar_t* library) : module_(::LoadLibraryW(library)) {
    const HMODULE module = module_.get();
    if (!module) throw std::runtime_error("the recorder cannot be loaded");
    setScript_ = Entry<RecorderSetScriptFn>(module, "RecorderSetScript");
    block_ = Entry<RecorderBlockFn>(module, "RecorderBlock");
    text_ = Entry<RecorderTextFn>(module, "RecorderText");
    answers_ = Entry<RecorderAnswersFn>(module, "RecorderAnswers");
}

void Recorder::Script(long result, const std::vector<ScriptedMessage>& messages, int cancelPolls, bool confirm) {
    std::vector<const char*> texts;
    std::vector<unsigned long> codes;
    for (const ScriptedMessage& m : messages) {
        texts.push_back(m.text.c_str());
        codes.push_back(m.code);
    }
    RecorderScript script;
    script.result = result;
    script.messages = texts.data();
    script.codes = codes.data();
    script.messageCount = static_cast<int>(messages.size());
    script.cancelPolls = cancelPolls;
    script.confirm = confirm;
    setScript_(&script);
}

int Recorder::Calls() const {
    int calls = 0;
    block_(&calls);
    return calls;
}

std::optional<std::string> Recorder::Text(std::size_t fieldOffset) const {
    const char* text = text_(fieldOffset);
    return text ? std::optional<std::string>(text) : std::nullopt;
}

} // namespace ziptest
