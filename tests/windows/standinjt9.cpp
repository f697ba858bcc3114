// Stands in for the decoder in tests: follows the orders in "orders.txt" beside it, line by line.
//
//   print TEXT    prints a line
//   record        writes what it was given to "<low Hz>.txt" beside itself, and copies the WAV file
//   read          reads standard input up to its end
//   complain N    writes N thousand bytes to standard error
//   child         starts a child that runs until it is killed, and writes the child's process id to
//                 "child.txt" and its own to "self.txt"
//   wait MS       waits this number of milliseconds
//   hang          waits until it is killed
//   crash         ends with an access violation
//   exit N        ends with that exit code
//   await NAME    waits until a file with this name is beside it
//   for TEXT ...  follows the order in the rest of the line if the WAV file's path contains TEXT

#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>
#include <windows.h>

namespace outpost
{

namespace
{
std::wstring ownPath()
{
    wchar_t path[32768];
    GetModuleFileNameW(nullptr, path, 32768);
    return path;
}

std::wstring beside(const std::wstring &name)
{
    const std::wstring path = ownPath();
    return path.substr(0, path.find_last_of(L"\\/") + 1) + name;
}

std::string utf8(const std::wstring &text)
{
    std::string bytes(4 * text.size() + 1, '\0');
    const int length =
        WideCharToMultiByte(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()), bytes.data(),
                            static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<size_t>(length));
    return bytes;
}

std::string variable(const wchar_t *name)
{
    wchar_t value[32768] = L"";
    GetEnvironmentVariableW(name, value, 32768);
    return utf8(value);
}

std::string currentFolder()
{
    wchar_t folder[32768] = L"";
    GetCurrentDirectoryW(32768, folder);
    return utf8(folder);
}

// Written under another name first, so that nobody reads half of it.
void leave(const std::wstring &name, const std::string &text)
{
    const std::wstring part = beside(name + L".part");
    FILE *file = _wfopen(part.c_str(), L"wb");
    fwrite(text.data(), 1, text.size(), file);
    fclose(file);
    MoveFileExW(part.c_str(), beside(name).c_str(), MOVEFILE_REPLACE_EXISTING);
}

void record(int argc, wchar_t **argv)
{
    std::string text;
    for (int i = 1; i < argc; ++i) {
        text += "argument " + utf8(argv[i]) + '\n';
    }
    for (const wchar_t *name : {L"PATH", L"HOME", L"LOCALAPPDATA", L"APPDATA", L"OUTPOST_KEPT"}) {
        text += utf8(name) + ' ' + variable(name) + '\n';
    }
    text += "folder " + currentFolder() + '\n';
    text += std::string("window ") + (GetConsoleWindow() != nullptr ? "yes" : "no") + '\n';
    const std::wstring low = argc > 5 ? argv[5] : L"none";
    if (argc > 8) {
        CopyFileW(argv[8], beside(low + L".wav").c_str(), FALSE);
    }
    leave(low + L".txt", text);
}

void startChild()
{
    std::wstring command = L"\"" + ownPath() + L"\" stay";
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION child = {};
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                       &startup, &child)) {
        leave(L"child.txt", std::to_string(child.dwProcessId));
        leave(L"self.txt", std::to_string(GetCurrentProcessId()));
    }
}

void complain(int thousandBytes)
{
    // Otherwise each byte is written separately to the null device.
    std::setvbuf(stderr, nullptr, _IOFBF, 1 << 16);
    const std::string line = std::string(999, '~') + '\n';
    for (int i = 0; i < thousandBytes; ++i) {
        std::fwrite(line.data(), 1, line.size(), stderr);
    }
}

void crash()
{
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    TerminateProcess(GetCurrentProcess(), STATUS_ACCESS_VIOLATION);
}

void await(const std::string &name)
{
    const std::wstring path = beside(std::wstring(name.begin(), name.end()));
    while (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
        Sleep(10);
    }
}

std::string firstWord(const std::string &line)
{
    return line.substr(0, line.find(' '));
}

std::string withoutFirstWord(const std::string &line)
{
    const size_t blank = line.find(' ');
    return blank == std::string::npos ? std::string() : line.substr(blank + 1);
}

bool isFor(const std::string &text, int argc, wchar_t **argv)
{
    return argc > 8 && utf8(argv[8]).find(firstWord(text)) != std::string::npos;
}

// Returns the exit code if the order is to exit, else -1.
int obey(const std::string &line, int argc, wchar_t **argv)
{
    const std::string order = firstWord(line);
    const std::string operand = withoutFirstWord(line);
    if (order == "print") {
        std::cout << operand << std::endl;
    } else if (order == "record") {
        record(argc, argv);
    } else if (order == "read") {
        std::cin.ignore(1 << 30, std::char_traits<char>::eof());
    } else if (order == "complain") {
        complain(std::stoi(operand));
    } else if (order == "child") {
        startChild();
    } else if (order == "wait") {
        Sleep(static_cast<DWORD>(std::stoi(operand)));
    } else if (order == "await") {
        await(operand);
    } else if (order == "hang") {
        Sleep(INFINITE);
    } else if (order == "crash") {
        crash();
    } else if (order == "for") {
        return isFor(operand, argc, argv) ? obey(withoutFirstWord(operand), argc, argv) : -1;
    } else {
        return std::stoi(operand);
    }
    return -1;
}
} // namespace

} // namespace outpost

using namespace outpost;

int wmain(int argc, wchar_t **argv)
{
    if (argc == 2 && std::wstring(argv[1]) == L"stay") {
        Sleep(INFINITE);
    }
    FILE *file = _wfopen(beside(L"orders.txt").c_str(), L"r");
    char line[1024];
    while (file != nullptr && fgets(line, sizeof line, file) != nullptr) {
        std::string order = line;
        order.erase(order.find_last_not_of("\r\n") + 1);
        const int exitCode = obey(order, argc, argv);
        if (exitCode >= 0) {
            return exitCode;
        }
    }
    return 0;
}
