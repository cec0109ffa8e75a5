#include "kernel/main/informationobject.h"

namespace qel {
namespace main {

InformationObject::InformationObject(const QString& description, const QString& name, const QIcon& icon,
                                     const QUrl& homepage, const QUrl& license)
    : description(description), name(name), icon(icon), homepage(homepage), license(license)
{
}

InformationObject::~InformationObject()
{
    for (ThirdPartyInfos* infos : additionalInformations)
        delete infos;
}

} // namespace main
} // namespace qel
