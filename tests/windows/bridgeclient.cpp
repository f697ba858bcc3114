// A local client of the bridge on native sockets: "bridgeclient PORT LINES" prints what it
// receives, byte for byte, until it has this many lines.

#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <string>
#include <winsock2.h>

int wmain(int argc, wchar_t **argv)
{
    WSADATA started;
    if (argc < 3 || WSAStartup(MAKEWORD(2, 2), &started) != 0) {
        return 2;
    }
    const SOCKET bridge = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<u_short>(std::stoul(argv[1])));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(bridge, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        return 1;
    }
    _setmode(_fileno(stdout), _O_BINARY);
    char received = 0;
    for (int lines = std::stoi(argv[2]); lines > 0 && recv(bridge, &received, 1, 0) == 1;) {
        std::putchar(received);
        std::fflush(stdout);
        lines -= received == '\n' ? 1 : 0;
    }
    closesocket(bridge);
    WSACleanup();
    return 0;
}
