// Preloaded into a program: no host's name is ever found, and each look-up takes ages.

#include <netdb.h>
#include <unistd.h>

extern "C" int getaddrinfo(const char * /*node*/, const char * /*service*/,
                           const addrinfo * /*hints*/, addrinfo ** /*result*/)
{
    ::sleep(100);
    return EAI_AGAIN;
}
