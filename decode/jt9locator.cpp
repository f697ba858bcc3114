#include "decode/jt9locator.h"

#include "decode/jt9platform.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QProcessEnvironment>
#include <QSet>
#include <algorithm>

namespace outpost
{

namespace
{
// Usual installation folders, relative to the folder in an environment variable.
struct UsualFolder {
    const char *variable;
    const char *below;
    bool isInstallation; // otherwise a folder that may hold several
};
constexpr UsualFolder usualFolders[] = {{"ProgramFiles", "/WSJT-X", true},
                                        {"ProgramFiles", "/WSJT", false},
                                        {"ProgramFiles(x86)", "/WSJT-X", true},
                                        {"LOCALAPPDATA", "/Programs/WSJT-X", true}};

// Treats both separators alike, so that a path with a drive letter gets the same result on every
// system.
QString comparable(const QString &path, Qt::CaseSensitivity fileNames = Qt::CaseInsensitive)
{
    const QString slashed = QString(path).replace(QLatin1Char('\\'), QLatin1Char('/'));
    return fileNames == Qt::CaseInsensitive ? slashed.toLower() : slashed;
}

// Off Windows "C:/..." is a relative path.
bool isOfThisSystem(const QString &path)
{
    const bool hasDriveLetter = path.size() > 1 && path.at(1) == QLatin1Char(':');
    return !Jt9Platform::nativeFormCounts || !hasDriveLetter;
}

bool anyBeside(const QFileInfo &decoder, const QStringList &names)
{
    const QDir folder = decoder.absoluteDir();
    return std::any_of(names.begin(), names.end(),
                       [&](const QString &name) { return folder.exists(name); });
}

bool hasQtCoreBeside(const QFileInfo &decoder)
{
    return anyBeside(decoder, {QStringLiteral("Qt5Core.dll"), QStringLiteral("Qt6Core.dll")});
}

bool hasApplicationBeside(const QFileInfo &decoder)
{
    return anyBeside(decoder, {QStringLiteral("wsjtx.exe"), QStringLiteral("wsjt-x.exe"),
                               QStringLiteral("wsjtz.exe"), QStringLiteral("wsjt-z.exe")});
}

bool isProgram(const QFileInfo &file)
{
    return file.isFile() && file.isExecutable();
}

// Off Windows the decoder uses the system's Qt, so there is no Qt library beside it.
bool isNativeInstallation(const QFileInfo &decoder)
{
    if (!Jt9Platform::nativeFormCounts || decoder.fileName() != QLatin1String("jt9") ||
        !isProgram(decoder)) {
        return false;
    }
    const QDir folder = decoder.absoluteDir();
    const QStringList applications = {QStringLiteral("wsjtx"), QStringLiteral("wsjt-x"),
                                      QStringLiteral("wsjtz"), QStringLiteral("wsjt-z")};
    return std::any_of(applications.begin(), applications.end(), [&](const QString &name) {
        return isProgram(QFileInfo(folder.filePath(name)));
    });
}

QStringList nativeCandidates(const QProcessEnvironment &environment)
{
    QStringList candidates;
    const QStringList searchPath =
        environment.value(QStringLiteral("PATH")).split(QDir::listSeparator(), Qt::SkipEmptyParts);
    for (const QString &folder : searchPath) {
        if (QDir::isAbsolutePath(folder)) {
            candidates.append(folder + QStringLiteral("/jt9"));
        }
    }
    return candidates << QStringLiteral("/usr/local/bin/jt9") << QStringLiteral("/usr/bin/jt9");
}

QStringList newestFirstUnder(const QString &root)
{
    QList<QFileInfo> found;
    QDirIterator files(root, {QStringLiteral("jt9.exe")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        found.append(files.fileInfo());
    }
    std::sort(found.begin(), found.end(), [](const QFileInfo &a, const QFileInfo &b) {
        return a.lastModified() > b.lastModified();
    });
    QStringList paths;
    for (const QFileInfo &file : qAsConst(found)) {
        paths.append(file.absoluteFilePath());
    }
    return paths;
}
} // namespace

Jt9Places jt9PlacesOfThisSystem(const QString &currentPath, const QString &applicationDir,
                                const QProcessEnvironment &environment)
{
    Jt9Places places;
    places.candidates = QStringList{currentPath, applicationDir + QStringLiteral("/jt9.exe"),
                                    QStringLiteral("C:/WSJT/wsjtx/bin/jt9.exe"),
                                    QStringLiteral("C:/WSJT/wsjtz/bin/jt9.exe")};
    places.roots = QStringList{QStringLiteral("C:/WSJT")};

    for (const UsualFolder &usual : usualFolders) {
        const QString base = environment.value(QLatin1String(usual.variable));
        if (base.isEmpty()) {
            continue;
        }
        const QString folder = base + QLatin1String(usual.below);
        places.roots.append(folder);
        if (usual.isInstallation) {
            places.candidates.append(folder + QStringLiteral("/bin/jt9.exe"));
        }
    }
    if (Jt9Platform::nativeFormCounts) {
        places.lastCandidates = nativeCandidates(environment);
    }
    return places;
}

QString findInstalledJt9(const Jt9Places &places)
{
    QStringList paths = places.candidates;
    for (const QString &root : places.roots) {
        if (isOfThisSystem(root) && QFileInfo(root).isDir()) {
            paths += newestFirstUnder(root);
        }
    }
    const QStringList candidates =
        distinctPaths(paths + places.lastCandidates, Jt9Platform::fileNames);
    const auto found = std::find_if(candidates.begin(), candidates.end(), [](const QString &path) {
        return isOfThisSystem(path) && isInstalledJt9(path);
    });
    return found == candidates.end() ? QString() : *found;
}

QStringList distinctPaths(const QStringList &paths, Qt::CaseSensitivity fileNames)
{
    QStringList distinct;
    QSet<QString> seen;
    for (const QString &path : paths) {
        const QString trimmed = path.trimmed();
        if (trimmed.isEmpty()) {
            continue;
        }
        const QString cleaned = QDir::cleanPath(trimmed);
        const QString key = comparable(cleaned, fileNames);
        if (seen.contains(key)) {
            continue;
        }
        seen.insert(key);
        distinct.append(cleaned);
    }
    return distinct;
}

bool isRefusedJt9Path(const QString &absolutePath)
{
    const QString path = comparable(absolutePath);
    if (path.startsWith(QLatin1String("c:/pelq-kiwi-outpost/")) ||
        path.startsWith(QLatin1String("c:/wsjt-x_v3.0.2_pelq-mods/"))) {
        return true;
    }

    static const QSet<QString> refusedNames = {QStringLiteral("src"),
                                               QStringLiteral("build"),
                                               QStringLiteral("debug"),
                                               QStringLiteral("cmakefiles"),
                                               QStringLiteral("accepted_stage"),
                                               QStringLiteral("best_accepted")};
    const QStringList parts = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    return std::any_of(parts.begin(), parts.end(), [](const QString &part) {
        return refusedNames.contains(part) || part.startsWith(QLatin1String("step")) ||
               part.startsWith(QLatin1String("stage"));
    });
}

bool canRunJt9(const QString &path)
{
    const QFileInfo decoder(path);
    return hasQtCoreBeside(decoder) || isNativeInstallation(decoder);
}

bool isInstalledJt9(const QString &path)
{
    const QFileInfo decoder(path);
    return decoder.isFile() && !isRefusedJt9Path(decoder.absoluteFilePath()) && canRunJt9(path) &&
           (hasApplicationBeside(decoder) || isNativeInstallation(decoder));
}

bool isJt9FileName(const QString &fileName)
{
    return fileName.compare(QLatin1String("jt9.exe"), Qt::CaseInsensitive) == 0 ||
           (Jt9Platform::nativeFormCounts && fileName == QLatin1String("jt9"));
}

QString jt9FileFilter()
{
    return Jt9Platform::nativeFormCounts
               ? QStringLiteral("jt9 (jt9 jt9.exe);;All files (*)")
               : QStringLiteral("jt9.exe (jt9.exe);;Executable files (*.exe);;All files (*)");
}

} // namespace outpost
