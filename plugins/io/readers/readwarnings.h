#pragma once

#include <QString>
#include <QStringList>

namespace qel {
namespace io {
namespace readers {

// What a reader put up with in a file it could still read, as phrases that name the place
// ("header line 3: ..."). A hostile file could have a warning on every line: only the
// first few are kept, the rest counted in one last entry.
class ReadWarnings
{
public:
    static const int KEPT = 20;

    void add(const QString& warning);
    void append(const ReadWarnings& other);
    void clear();

    // The kept warnings, then "N more warnings" when some were dropped.
    QStringList list() const;
    bool isEmpty() const { return total == 0; }

private:
    QStringList kept;
    long long total = 0;
};

} // namespace readers
} // namespace io
} // namespace qel
