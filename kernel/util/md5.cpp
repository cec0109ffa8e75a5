#include "kernel/util/md5.h"

#include <QCryptographicHash>

namespace qel {
namespace util {

QString MD5::calc(const QString& text)
{
    return QString::fromLatin1(QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Md5).toHex());
}

} // namespace util
} // namespace qel
