#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace outpost
{

inline bool writeProcessFile(const char *path, const QByteArray &line)
{
    QFile file(QString::fromLatin1(path));
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
           file.write(line) == line.size();
}

// Without privileges: becomes root of a new user namespace.
inline bool becomeOwnRoot()
{
    const QByteArray uidMap = "0 " + QByteArray::number(getuid()) + " 1";
    const QByteArray gidMap = "0 " + QByteArray::number(getgid()) + " 1";
    return unshare(CLONE_NEWUSER) == 0 && writeProcessFile("/proc/self/uid_map", uidMap) &&
           writeProcessFile("/proc/self/setgroups", "deny") &&
           writeProcessFile("/proc/self/gid_map", gidMap);
}

// Moves this process to a new mount namespace. It can then mount small or read-only file systems
// that no other process sees, and that disappear with it. Call before any thread starts; the test
// library starts one of its own.
inline bool enterPrivateMounts()
{
    return (geteuid() == 0 || becomeOwnRoot()) && unshare(CLONE_NEWNS) == 0 &&
           mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

// The message for a failure.
inline constexpr const char *privateMountsRefused =
    "This test mounts file systems of its own, and the system refuses that. Run it as root, or let "
    "every user make user namespaces (sysctl user.max_user_namespaces, "
    "kernel.unprivileged_userns_clone, kernel.apparmor_restrict_unprivileged_userns; in a "
    "container its seccomp profile).";

// For its lifetime, mounts a file system in memory on an existing folder.
class MemoryMount
{
public:
    // `options` as in mount(8), such as "size=256k".
    MemoryMount(const QString &folder, const char *options)
        : target(QFile::encodeName(folder)),
          mounted(mount("tmpfs", target.constData(), "tmpfs", 0, options) == 0)
    {
    }
    ~MemoryMount()
    {
        if (mounted) {
            umount2(target.constData(), MNT_DETACH);
        }
    }
    Q_DISABLE_COPY(MemoryMount)

    bool isMounted() const { return mounted; }
    bool makeReadOnly()
    {
        return mount(nullptr, target.constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
    }

private:
    const QByteArray target;
    const bool mounted;
};

} // namespace outpost
