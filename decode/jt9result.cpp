#include "decode/jt9result.h"

namespace outpost
{

namespace
{

QString failurePattern(const Jt9Failure &failure)
{
    switch (failure.cause) {
    case Jt9Cause::NoDecoder:
        return failure.detail.isEmpty() ? QStringLiteral("no decodes, no decoder is chosen")
                                        : QStringLiteral("no decodes, %1 cannot be run");
    case Jt9Cause::NotStarted:
        return QStringLiteral("no decodes, jt9 did not start: %1");
    case Jt9Cause::Overran:
        return QStringLiteral("no decodes, jt9 took longer than %1 s");
    case Jt9Cause::Aborted:
        return QStringLiteral("no decodes, jt9 was aborted");
    case Jt9Cause::Killed:
        return QStringLiteral("no decodes, jt9 was killed by signal %1");
    case Jt9Cause::ExitCode:
        return QStringLiteral("no decodes, jt9 ended with exit code %1");
    case Jt9Cause::OldFolderLeft:
        return QStringLiteral("no decodes, an old scratch folder could not be removed");
    case Jt9Cause::FolderLeft:
        return QStringLiteral("its scratch folder could not be removed");
    case Jt9Cause::FolderMissing:
        return QStringLiteral("no decodes, the scratch folder could not be made");
    case Jt9Cause::WavNotWritten:
        return QStringLiteral("no decodes, the WAV file was not written: %1");
    case Jt9Cause::TooManyLines:
        return QStringLiteral("jt9 printed too many lines; the first %1 were kept");
    case Jt9Cause::PassedOver:
        return QStringLiteral("no decodes, the decoder is too slow");
    case Jt9Cause::None:
        break;
    }
    return {};
}

} // namespace

QString exitCodeText(int code)
{
    if (code >= 0) {
        return QString::number(code);
    }
    return QStringLiteral("0x%1").arg(QString::number(static_cast<quint32>(code), 16).toUpper());
}

QString failureText(const Jt9Failure &failure)
{
    const QString pattern = failurePattern(failure);
    return failure.detail.isEmpty() ? pattern : pattern.arg(failure.detail);
}

} // namespace outpost
