#include "base/console.h"

#include <qt_windows.h>
#include <shellapi.h>

namespace outpost
{

namespace
{
bool writeToConsole(HANDLE console, const QString &text)
{
    DWORD written = 0;
    return WriteConsoleW(console, text.utf16(), static_cast<DWORD>(text.size()), &written,
                         nullptr) != 0;
}

// Standard output may be redirected to a pipe or a file.
bool writeToFile(HANDLE file, const QByteArray &bytes)
{
    DWORD written = 0;
    return WriteFile(file, bytes.constData(), static_cast<DWORD>(bytes.size()), &written,
                     nullptr) != 0;
}

bool writeToStandardHandle(DWORD which, const QString &text)
{
    const HANDLE handle = GetStdHandle(which);
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE ||
        GetFileType(handle) == FILE_TYPE_UNKNOWN) {
        return false;
    }
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != 0 ? writeToConsole(handle, text)
                                              : writeToFile(handle, text.toLocal8Bit());
}

bool writeToParentConsole(const QString &text)
{
    if (AttachConsole(ATTACH_PARENT_PROCESS) == 0) {
        return false;
    }
    const HANDLE console = CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_WRITE,
                                       nullptr, OPEN_EXISTING, 0, nullptr);
    bool ok = false;
    if (console != INVALID_HANDLE_VALUE) {
        ok = writeToConsole(console, text);
        CloseHandle(console);
    }
    FreeConsole();
    return ok;
}

void showBox(const Ending &ending)
{
    const UINT icon = ending.exitCode == 0 ? MB_ICONINFORMATION : MB_ICONERROR;
    MessageBoxW(nullptr, reinterpret_cast<const wchar_t *>(ending.text.utf16()),
                L"PELQ Kiwi Outpost", MB_OK | icon);
}
} // namespace

// main()'s own arguments have lost the characters that the code page cannot represent.
QStringList argumentList(int /*argc*/, char ** /*argv*/)
{
    int count = 0;
    wchar_t **words = CommandLineToArgvW(GetCommandLineW(), &count);
    QStringList arguments;
    for (int i = 0; i < count; ++i) {
        arguments.append(QString::fromWCharArray(words[i]));
    }
    LocalFree(words);
    return arguments;
}

bool hasDisplay()
{
    return true;
}

void showEnding(const Ending &ending)
{
    const DWORD stream = ending.exitCode == 0 ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE;
    const QString line = ending.text + QLatin1Char('\n');
    if (!writeToStandardHandle(stream, line) && !writeToParentConsole(line)) {
        showBox(ending);
    }
}

} // namespace outpost
