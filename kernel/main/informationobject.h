#pragma once

#include "kernel/main/thirdpartyinfos.h"

#include <QIcon>
#include <QString>
#include <QUrl>
#include <list>

namespace qel {
namespace main {

// What a module tells about itself, and the third-party notes its plug-ins add at run time.
class InformationObject
{
public:
    InformationObject(const QString& description, const QString& name, const QIcon& icon,
                      const QUrl& homepage = QUrl(), const QUrl& license = QUrl());
    virtual ~InformationObject();

    const QString& getDescription() const { return description; }
    const QString& getName() const { return name; }
    const QIcon& getIcon() const { return icon; }
    const QUrl& getHomepage() const { return homepage; }
    const QUrl& getLicense() const { return license; }

    // Owned by this object: entries added are deleted with it, entries taken out are
    // the taker's to delete.
    std::list<ThirdPartyInfos*>* getAdditionalInformations() { return &additionalInformations; }

private:
    InformationObject(const InformationObject&) = delete;
    InformationObject& operator=(const InformationObject&) = delete;

    QString description;
    QString name;
    QIcon icon;
    QUrl homepage;
    QUrl license;
    std::list<ThirdPartyInfos*> additionalInformations;
};

} // namespace main
} // namespace qel
