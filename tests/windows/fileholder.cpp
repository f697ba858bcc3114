// Holds a file open for reading: "fileholder FILE MS [exclusive]". Others may read and write it
// (with "exclusive", not even that), but nobody can replace it. Prints "held" when it has the file,
// and closes it after MS ms.

#include <cstdio>
#include <string>
#include <windows.h>

int wmain(int argc, wchar_t **argv)
{
    if (argc < 3) {
        return 2;
    }
    const DWORD sharing = argc > 3 ? 0 : FILE_SHARE_READ | FILE_SHARE_WRITE;
    const HANDLE file =
        CreateFileW(argv[1], GENERIC_READ, sharing, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return 1;
    }
    std::puts("held");
    std::fflush(stdout);
    Sleep(static_cast<DWORD>(std::stoul(argv[2])));
    CloseHandle(file);
    return 0;
}
