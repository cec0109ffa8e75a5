#include "kernel/util/exception.h"

namespace qel {

Exception::Exception(const QString& message, const char* file, unsigned int line, const char* function)
    : message(message), file(QString::fromUtf8(file)), line(line), function(QString::fromUtf8(function)),
      utf8(message.toStdString())
{
}

} // namespace qel
