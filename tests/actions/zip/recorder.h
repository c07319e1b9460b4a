// A stand-in of DZIP32.dll or DUNZIP32.dll for the action tests: it records the command block that the action hands
// over (its bytes and the texts it points to), makes the callbacks that the test scripts, and returns the scripted
// result. The tests run in a folder of their own where the recorders take the libraries' names.
#pragma once
#include <cstddef>

struct RecorderScript {
    long result = 0;                      // what the entry point returns
    const char* const* messages = nullptr; // sent to the message callback in order, each with its code
    const unsigned long* codes = nullptr;
    int messageCount = 0;
    int cancelPolls = 0;                  // polls of the cancel callback after the messages
    bool confirm = false;                 // one call of the confirm callback at the end
};

// Entry points of both recorders (besides dzip or dunzip).
using RecorderSetScriptFn = void(__stdcall*)(const RecorderScript* script);
// The bytes of the last block (sizeof the block) and the number of calls so far.
using RecorderBlockFn = const unsigned char*(__stdcall*)(int* calls);
// The text that the pointer field at this offset of the last block pointed to; null when the field was null.
using RecorderTextFn = const char*(__stdcall*)(std::size_t fieldOffset);
// The callbacks' answers of the last call, in order: "cancel=0 message=0 confirm=1".
using RecorderAnswersFn = const char*(__stdcall*)();
