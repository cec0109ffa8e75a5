#include "kernel/main/abstractparameter.h"

#include <QMutexLocker>
#include <algorithm>
#include <cmath>
#include <vector>

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

namespace {

template <class T>
bool allFinite(const void* value)
{
    const auto& numbers = *static_cast<const std::vector<T>*>(value);
    return std::all_of(numbers.begin(), numbers.end(), [](T number) { return std::isfinite(number); });
}

} // namespace

bool AbstractParameter::holdsFiniteValue() const
{
    const void* value = getValuePointer();
    if (!value)
        return true;
    const std::type_info& type = getTypeInfo();
    if (type == typeid(double))
        return std::isfinite(*static_cast<const double*>(value));
    if (type == typeid(float))
        return std::isfinite(*static_cast<const float*>(value));
    if (type == typeid(std::vector<double>))
        return allFinite<double>(value);
    if (type == typeid(std::vector<float>))
        return allFinite<float>(value);
    return true;
}

bool AbstractParameter::isCastable(const QString& text) const
{
    return castClass.isNull() || castClass->isCastable(text);
}

} // namespace main
} // namespace qel
