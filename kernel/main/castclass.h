#pragma once

#include "kernel/util/zmemorymanaged.h"

#include <QLocale>
#include <QString>

namespace qel {
namespace main {

// Converts between the text of a command argument and a value on the heap.
// castString throws qel::Exception for a text that isCastable rejects.
class CastClass : public qel::util::ZMemoryManaged<CastClass>
{
public:
    CastClass() = default;
    ~CastClass() override = default;

    // A new value on the heap, owned by the caller.
    virtual void* castString(const QString& text) = 0;
    virtual bool isCastable(const QString& text) = 0;
    virtual QString castBack(void* value) = 0;
    // Frees a value of castString for cast classes whose values need more than plain deletion.
    virtual void doSpecialDeletion(void* value);

    bool needsSpecialDeletion() const { return specialDeletion; }

protected:
    void setNeedsSpecialDeletion(bool needed) { specialDeletion = needed; }

    // Numbers are read and written in the C locale, without group separators.
    static const QLocale& numberLocale();
    // Clears `ok` for infinities and NaN.
    static double finiteOrFail(double number, bool* ok);
    [[noreturn]] static void throwNotCastable(const QString& text, const char* expected, const char* function);

private:
    bool specialDeletion = false;
};

} // namespace main
} // namespace qel
