#include "kernel/main/castclass.h"

#include "kernel/util/exception.h"

#include <cmath>

namespace qel {
namespace main {

void CastClass::doSpecialDeletion(void*)
{
}

const QLocale& CastClass::numberLocale()
{
    static const QLocale locale = [] {
        QLocale c = QLocale::c();
        c.setNumberOptions(QLocale::OmitGroupSeparator | QLocale::RejectGroupSeparator);
        return c;
    }();
    return locale;
}

double CastClass::finiteOrFail(double number, bool* ok)
{
    if (!std::isfinite(number))
        *ok = false;
    return number;
}

void CastClass::throwNotCastable(const QString& text, const char* expected, const char* function)
{
    throw qel::Exception(QStringLiteral("'%1' is not %2").arg(text, QString::fromUtf8(expected)),
                         "kernel/main/castclass", __LINE__, function);
}

} // namespace main
} // namespace qel
