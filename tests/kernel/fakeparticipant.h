#pragma once

#include "kernel/io/projectparticipant.h"
#include "kernel/io/zfile.h"
#include "kernel/io/ztarfile.h"

#include <QString>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <memory>

namespace qel {
namespace test {

// Holds one text as its live state; writes it into its section and into an entry of its own.
class FakeParticipant : public qel::io::ProjectParticipant
{
public:
    explicit FakeParticipant(const QString& section) : section(section) {}

    QString sectionName() const override { return section; }
    QString entryName() const { return QStringLiteral("fake/%1.bin").arg(section); }

    bool save(QXmlStreamWriter* writer, qel::io::ZTarFile* tar, const bool& abort, QString& error) override
    {
        if (raiseAbort)
            *raiseAbort = true;
        if (abort)
            return false;
        if (failSave) {
            error = QStringLiteral("the %1 can't be written").arg(section);
            return false;
        }
        writer->writeTextElement(QStringLiteral("value"), live);
        return tar->addData(live.toUtf8(), entryName());
    }

    bool load(QXmlStreamReader* reader, qel::io::ZTarFile* tar, bool& abort, QString& error) override
    {
        ++loads;
        if (abortLoad) {
            abort = true;
            return false;
        }
        if (!reader->readNextStartElement() || reader->name() != QLatin1String("value")) {
            error = QStringLiteral("the %1 holds no value").arg(section);
            return false;
        }
        const QString text = reader->readElementText();
        reader->readNextStartElement(); // onto the section's end
        std::unique_ptr<qel::io::ZFile> entry(tar->getFile(entryName()));
        if (!entry || !entry->open(QIODevice::ReadOnly) || entry->readAll() != text.toUtf8()) {
            error = QStringLiteral("the entry of the %1 doesn't match").arg(section);
            return false;
        }
        staged = text;
        hasStaged = true;
        return true;
    }

    void commit() override
    {
        ++commits;
        live = staged;
        hasStaged = false;
    }
    void discard() override
    {
        ++discards;
        hasStaged = false;
    }
    void clear() override
    {
        ++clears;
        live.clear();
    }

    QString section;
    QString live;
    QString staged;
    bool hasStaged = false;
    bool failSave = false;
    bool abortLoad = false;
    bool* raiseAbort = nullptr;
    int loads = 0;
    int commits = 0;
    int discards = 0;
    int clears = 0;
};

} // namespace test
} // namespace qel
