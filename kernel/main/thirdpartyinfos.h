#pragma once

#include <QString>

namespace qel {
namespace main {

// What a plug-in tells about the third-party work it brings with it.
struct ThirdPartyInfos
{
    ThirdPartyInfos() = default;
    ThirdPartyInfos(const QString& name, const QString& description, const QString& license, const QString& url)
        : name(name), description(description), license(license), url(url)
    {
    }

    bool operator==(const ThirdPartyInfos& other) const
    {
        return name == other.name && description == other.description && license == other.license
               && url == other.url;
    }
    bool operator!=(const ThirdPartyInfos& other) const { return !(*this == other); }

    QString name;
    QString description;
    QString license;
    QString url;
};

} // namespace main
} // namespace qel
