#pragma once

#include "store/goodreceiverstore.h"
#include "tests/fixture/home.h"

#include <QJsonArray>

namespace outpost
{

inline QJsonArray savedList()
{
    return QJsonDocument::fromJson(fileBytes(listFile())).array();
}

inline void saveList(const QJsonArray &list)
{
    putFile(listFile(), QJsonDocument(list).toJson());
}

inline QStringList removedOnDisk()
{
    return settingOnDisk(QStringLiteral("receivers/removedKeys"));
}

inline void removeBefore(const QStringList &keys)
{
    saveSetting(removedKeysSetting(), keys);
}

} // namespace outpost
