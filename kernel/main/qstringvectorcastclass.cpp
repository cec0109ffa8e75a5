#include "kernel/main/qstringvectorcastclass.h"

#include "kernel/util/parameterstringanalyzer.h"

#include <QStringList>
#include <vector>

namespace qel {
namespace main {

QStringVectorCastClass::QStringVectorCastClass()
{
    setNeedsSpecialDeletion(true);
}

void* QStringVectorCastClass::castString(const QString& text)
{
    if (!isCastable(text))
        throwNotCastable(text, "a list", "qel::main::QStringVectorCastClass::castString");
    auto* list = new std::vector<QString>();
    qel::util::ParameterStringAnalyzer::findParameters(*list, text.trimmed().mid(1).chopped(1));
    return list;
}

bool QStringVectorCastClass::isCastable(const QString& text)
{
    const QString trimmed = text.trimmed();
    return trimmed.startsWith(QLatin1Char('[')) && trimmed.endsWith(QLatin1Char(']')) && trimmed.size() >= 2;
}

QString QStringVectorCastClass::castBack(void* value)
{
    if (!value)
        return QString();
    const auto* list = static_cast<std::vector<QString>*>(value);
    return QLatin1Char('[') + QStringList(list->begin(), list->end()).join(QLatin1Char(',')) + QLatin1Char(']');
}

void QStringVectorCastClass::doSpecialDeletion(void* value)
{
    delete static_cast<std::vector<QString>*>(value);
}

} // namespace main
} // namespace qel
