#pragma once

#include "kernel/main/castclass.h"
#include "kernel/main/doublecastclass.h"
#include "kernel/main/floatcastclass.h"
#include "kernel/main/integercastclass.h"
#include "kernel/main/unsignedintegercastclass.h"
#include "kernel/util/exception.h"
#include "kernel/util/parameterstringanalyzer.h"
#include "kernel/log/logger.h"

#include <QMutex>
#include <QMutexLocker>
#include <QString>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace qel {
namespace main {

// Lists "[e1,e2,...]" of numbers; each element goes through the element cast class.
// Only the opening bracket is checked: the last character is dropped whatever it is.
template <class T>
class VectorCastClass : public CastClass
{
public:
    // A given element cast class is used and not owned; otherwise one is made for
    // int, unsigned int, double and float.
    explicit VectorCastClass(CastClass* elementCastClass = nullptr)
        : elementCastClass(elementCastClass), ownsElementCastClass(false)
    {
        setNeedsSpecialDeletion(true);
        if (!this->elementCastClass) {
            this->elementCastClass = makeElementCastClass();
            ownsElementCastClass = this->elementCastClass != nullptr;
        }
        if (!this->elementCastClass) {
            const std::string function = "qel::main::VectorCastClass<" + qel::util::demangledTypeName(typeid(T))
                                         + ">::VectorCastClass";
            qel::log::Logger::log(0, "kernel/main/vectorcastclass", 62, function.c_str(), nullptr,
                                  "VectorCastClass(): No cast class found/given");
        }
    }

    ~VectorCastClass() override
    {
        if (ownsElementCastClass)
            delete elementCastClass;
    }

    VectorCastClass(const VectorCastClass&) = delete;
    VectorCastClass& operator=(const VectorCastClass&) = delete;

    void* castString(const QString& text) override
    {
        QMutexLocker locker(&partsMutex);
        splitIntoParts(text);
        if (parts.empty())
            return nullptr;
        if (!elementCastClass)
            throw qel::Exception(QStringLiteral("No element cast class"), "kernel/main/vectorcastclass", __LINE__,
                                 "qel::main::VectorCastClass::castString");
        std::unique_ptr<std::vector<T>> list(new std::vector<T>());
        list->reserve(parts.size());
        for (const QString& part : parts) {
            T* element = static_cast<T*>(elementCastClass->castString(part));
            list->push_back(*element);
            freeElement(element);
        }
        return list.release();
    }

    bool isCastable(const QString& text) override
    {
        if (!elementCastClass || !text.startsWith(QLatin1Char('[')))
            return false;
        QMutexLocker locker(&partsMutex);
        splitIntoParts(text);
        if (parts.empty())
            return false;
        for (const QString& part : parts) {
            if (!elementCastClass->isCastable(part))
                return false;
        }
        return true;
    }

    QString castBack(void* value) override
    {
        if (!value || !elementCastClass)
            return QString();
        std::vector<T>& list = *static_cast<std::vector<T>*>(value);
        QString text = QStringLiteral("[");
        for (T& element : list)
            text += elementCastClass->castBack(&element) + QLatin1Char(',');
        text.chop(1);
        return text + QLatin1Char(']');
    }

    void doSpecialDeletion(void* value) override { delete static_cast<std::vector<T>*>(value); }

    CastClass* getElementCastClass() const { return elementCastClass; }

private:
    void splitIntoParts(const QString& text)
    {
        parts.clear();
        const QString inner = text.size() >= 2 ? text.mid(1, text.size() - 2) : QString();
        qel::util::ParameterStringAnalyzer::findParameters(parts, inner);
    }

    void freeElement(T* element)
    {
        if (elementCastClass->needsSpecialDeletion())
            elementCastClass->doSpecialDeletion(element);
        else
            delete element;
    }

    static CastClass* makeElementCastClass()
    {
        if (std::is_same<T, int>::value)
            return new IntegerCastClass();
        if (std::is_same<T, unsigned int>::value)
            return new UnsignedIntegerCastClass();
        if (std::is_same<T, double>::value)
            return new DoubleCastClass();
        if (std::is_same<T, float>::value)
            return new FloatCastClass();
        return nullptr;
    }

    std::vector<QString> parts;
    QMutex partsMutex;
    CastClass* elementCastClass;
    bool ownsElementCastClass;
};

} // namespace main
} // namespace qel
