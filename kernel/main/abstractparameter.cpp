#include "kernel/main/abstractparameter.h"

#include <QMutexLocker>

namespace qel {
namespace main {

AbstractParameter::AbstractParameter(const QString& name, const QString& description, const QString& defaultText,
                                     bool ownsValue, ParameterPanelFactory* panelFactory)
    : typeInfo(&typeid(void)), ownsValue(ownsValue), name(name), description(description),
      defaultText(std::make_shared<DefaultText>()), panelFactory(panelFactory)
{
    this->defaultText->text = defaultText;
}

AbstractParameter::AbstractParameter(const AbstractParameter& other)
    : castClass(other.castClass), typeInfo(other.typeInfo), ownsValue(other.ownsValue), name(other.name),
      description(other.description), defaultText(other.defaultText), panelFactory(other.panelFactory)
{
}

AbstractParameter::~AbstractParameter() = default;

QString AbstractParameter::getDefaultText() const
{
    QMutexLocker locker(&defaultText->mutex);
    return defaultText->text;
}

void AbstractParameter::setDefaultParameterForDefaultGUI(const QString& text)
{
    QMutexLocker locker(&defaultText->mutex);
    defaultText->text = text;
}

void AbstractParameter::setCastClass(CastClass* newCastClass)
{
    castClass = newCastClass;
}

bool AbstractParameter::isCastable(const QString& text) const
{
    return castClass.isNull() || castClass->isCastable(text);
}

} // namespace main
} // namespace qel
