#include "screenshot.h"
#include "png.h"
#include "text.h"
#include "frame/errors.h"
#include "frame/handles.h"
#include "frame/messages.h"

namespace host {
namespace {

// The DC of a whole window, released to that window.
class WindowDc {
public:
    explicit WindowDc(HWND window) noexcept : window_(window), dc_(::GetWindowDC(window)) {}
    ~WindowDc() {
        if (dc_) ::ReleaseDC(window_, dc_);
    }
    WindowDc(const WindowDc&) = delete;
    WindowDc& operator=(const WindowDc&) = delete;
    HDC get() const noexcept { return dc_; }

private:
    HWND window_;
    HDC dc_;
};

// Selects an object into a DC for the lifetime of the selection.
class Selection {
public:
    Selection(HDC dc, HGDIOBJ object) noexcept : dc_(dc), previous_(::SelectObject(dc, object)) {}
    ~Selection() { ::SelectObject(dc_, previous_); }
    Selection(const Selection&) = delete;
    Selection& operator=(const Selection&) = delete;

private:
    HDC dc_;
    HGDIOBJ previous_;
};

[[noreturn]] void Fail(const wchar_t* what) {
    throw tol::truntime_error(std::wstring(L"cannot take a picture of the window: ") + what + L" failed");
}

// The window's pixels as RGB rows, top row first.
std::vector<std::uint8_t> CopyPixels(HWND window, LONG width, LONG height) {
    const WindowDc screen(window);
    if (!screen.get()) Fail(L"GetWindowDC");
    const tol::unique_memory_dc memory(::CreateCompatibleDC(screen.get()));
    if (!memory) Fail(L"CreateCompatibleDC");
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height; // top-down rows
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    const tol::unique_gdi_object bitmap(::CreateDIBSection(memory.get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!bitmap || !bits) Fail(L"CreateDIBSection");
    {
        const Selection selected(memory.get(), bitmap.get());
        if (!::BitBlt(memory.get(), 0, 0, width, height, screen.get(), 0, 0, SRCCOPY | CAPTUREBLT)) Fail(L"BitBlt");
        ::GdiFlush();
    }
    const size_t stride = (size_t{static_cast<DWORD>(width)} * 3 + 3) & ~size_t{3};
    std::vector<std::uint8_t> rgb(size_t{static_cast<DWORD>(width)} * height * 3);
    for (LONG y = 0; y < height; ++y) {
        const auto* row = static_cast<const std::uint8_t*>(bits) + stride * y;
        std::uint8_t* out = rgb.data() + size_t{static_cast<DWORD>(width)} * 3 * y;
        for (LONG x = 0; x < width; ++x, row += 3, out += 3) { // the DIB holds blue, green, red
            out[0] = row[2];
            out[1] = row[1];
            out[2] = row[0];
        }
    }
    return rgb;
}

void WriteWholeFile(const std::wstring& path, const std::string& bytes) {
    const tol::unique_file file(
        ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    if (!file || !::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
        written != bytes.size())
        throw tol::truntime_error(path + L": " + SystemText(tol::HResultFromLastError()));
}

} // namespace

void SaveWindowPicture(HWND window, const std::wstring& path) {
    RECT frame{};
    if (!::GetWindowRect(window, &frame)) Fail(L"GetWindowRect");
    const LONG width = frame.right - frame.left, height = frame.bottom - frame.top;
    if (width <= 0 || height <= 0) Fail(L"measuring the window");
    WriteWholeFile(path, EncodePng(CopyPixels(window, width, height), static_cast<std::uint32_t>(width),
                                   static_cast<std::uint32_t>(height)));
}

} // namespace host
