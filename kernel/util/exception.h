#pragma once

#include <QString>
#include <exception>
#include <string>

namespace qel {

// Raised by value by the math templates; carries where it was raised.
class Exception : public std::exception
{
public:
    Exception(const QString& message, const char* file, unsigned int line, const char* function);
    Exception(const Exception& other) = default;
    ~Exception() override = default;

    const QString& getMessage() const { return message; }
    const QString& getFile() const { return file; }
    unsigned int getLine() const { return line; }
    const QString& getFunction() const { return function; }
    const char* what() const noexcept override { return utf8.c_str(); }

private:
    QString message;
    QString file;
    unsigned int line;
    QString function;
    std::string utf8;
};

} // namespace qel
