#include "base/console.h"

#include <qt_windows.h>

namespace outpost
{

namespace
{
// Whoever started the program may read what it says through a pipe or a file.
bool writeToStandardHandle(DWORD which, const QByteArray &text)
{
    const HANDLE handle = GetStdHandle(which);
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE ||
        GetFileType(handle) == FILE_TYPE_UNKNOWN) {
        return false;
    }
    DWORD written = 0;
    return WriteFile(handle, text.constData(), static_cast<DWORD>(text.size()), &written,
                     nullptr) != 0;
}

bool writeToParentConsole(const QString &text)
{
    if (AttachConsole(ATTACH_PARENT_PROCESS) == 0) {
        return false;
    }
    const HANDLE console = CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_WRITE,
                                       nullptr, OPEN_EXISTING, 0, nullptr);
    DWORD written = 0;
    const bool ok = WriteConsoleW(console, text.utf16(), static_cast<DWORD>(text.size()), &written,
                                  nullptr) != 0;
    CloseHandle(console);
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

QStringList argumentList(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    return arguments;
}

void showEnding(const Ending &ending)
{
    const DWORD stream = ending.exitCode == 0 ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE;
    const QString line = ending.text + QLatin1Char('\n');
    if (!writeToStandardHandle(stream, line.toLocal8Bit()) && !writeToParentConsole(line)) {
        showBox(ending);
    }
}

} // namespace outpost
