// Owning wrappers for Win32 handles: one type per close function.
#pragma once
#include <windows.h>
#include <winsvc.h>
#include <objbase.h>
#include <utility>

namespace tol {

template <class Traits>
class unique_handle {
public:
    using type = typename Traits::type;

    explicit unique_handle(type h = Traits::invalid()) noexcept : h_(h) {}
    unique_handle(unique_handle&& other) noexcept : h_(other.release()) {}
    unique_handle& operator=(unique_handle&& other) noexcept {
        if (this != &other) reset(other.release());
        return *this;
    }
    unique_handle(const unique_handle&) = delete;
    unique_handle& operator=(const unique_handle&) = delete;
    ~unique_handle() { reset(); }

    type get() const noexcept { return h_; }
    // For out parameters: closes what is held and hands out the slot.
    type* put() noexcept {
        reset();
        return &h_;
    }
    type release() noexcept { return std::exchange(h_, Traits::invalid()); }
    void reset(type h = Traits::invalid()) noexcept {
        if (h_ != Traits::invalid()) Traits::close(h_);
        h_ = h;
    }
    explicit operator bool() const noexcept { return h_ != Traits::invalid(); }

private:
    type h_;
};

struct null_handle_traits {
    using type = HANDLE;
    static type invalid() noexcept { return nullptr; }
    static void close(type h) noexcept { ::CloseHandle(h); }
};
struct file_handle_traits {
    using type = HANDLE;
    static type invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(type h) noexcept { ::CloseHandle(h); }
};
struct find_handle_traits {
    using type = HANDLE;
    static type invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(type h) noexcept { ::FindClose(h); }
};
struct change_notification_traits {
    using type = HANDLE;
    static type invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(type h) noexcept { ::FindCloseChangeNotification(h); }
};
struct hkey_traits {
    using type = HKEY;
    static type invalid() noexcept { return nullptr; }
    static void close(type h) noexcept { ::RegCloseKey(h); }
};
struct sc_handle_traits {
    using type = SC_HANDLE;
    static type invalid() noexcept { return nullptr; }
    static void close(type h) noexcept { ::CloseServiceHandle(h); }
};
struct module_traits {
    using type = HMODULE;
    static type invalid() noexcept { return nullptr; }
    static void close(type h) noexcept { ::FreeLibrary(h); }
};
struct local_memory_traits {
    using type = HLOCAL;
    static type invalid() noexcept { return nullptr; }
    static void close(type h) noexcept { ::LocalFree(h); }
};

struct global_memory_traits {
    using type = HGLOBAL;
    static type invalid() noexcept { return nullptr; }
    static void close(type h) noexcept { ::GlobalFree(h); }
};
struct gdi_object_traits {
    using type = HGDIOBJ;
    static type invalid() noexcept { return nullptr; }
    static void close(type h) noexcept { ::DeleteObject(h); }
};
struct memory_dc_traits {
    using type = HDC;
    static type invalid() noexcept { return nullptr; }
    static void close(type h) noexcept { ::DeleteDC(h); }
};
struct co_task_memory_traits {
    using type = void*;
    static type invalid() noexcept { return nullptr; }
    static void close(type h) noexcept { ::CoTaskMemFree(h); }
};
struct window_traits {
    using type = HWND;
    static type invalid() noexcept { return nullptr; }
    static void close(type h) noexcept { ::DestroyWindow(h); }
};

using unique_event = unique_handle<null_handle_traits>;   // events, processes, threads
using unique_process = unique_handle<null_handle_traits>;
using unique_file = unique_handle<file_handle_traits>;
using unique_find = unique_handle<find_handle_traits>;
using unique_change_notification = unique_handle<change_notification_traits>;
using unique_hkey = unique_handle<hkey_traits>;
using unique_service = unique_handle<sc_handle_traits>; // service manager and service handles
using unique_module = unique_handle<module_traits>;
using unique_hlocal = unique_handle<local_memory_traits>;
using unique_hglobal = unique_handle<global_memory_traits>;
using unique_gdi_object = unique_handle<gdi_object_traits>; // fonts, brushes, bitmaps
using unique_window = unique_handle<window_traits>;
using unique_memory_dc = unique_handle<memory_dc_traits>;            // CreateCompatibleDC
using unique_co_task_memory = unique_handle<co_task_memory_traits>; // e.g. item lists of the shell

} // namespace tol
