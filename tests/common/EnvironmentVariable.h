#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace test {

/// A variable of this process's environment has another value as long as this lives.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, const QByteArray& value) : m_name(name), m_before(qgetenv(name))
    {
        qputenv(name, value);
    }
    ~EnvironmentVariable()
    {
        if (m_before.isNull())
            qunsetenv(m_name);
        else
            qputenv(m_name, m_before);
    }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    const char* m_name;
    QByteArray m_before; // null when it was not set
};

} // namespace test
