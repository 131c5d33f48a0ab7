#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace test {

/// A variable of this process's environment has another value as long as this lives.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, const QByteArray& value)
        : m_name(name), m_wasSet(qEnvironmentVariableIsSet(name)), m_before(qgetenv(name))
    {
        qputenv(name, value);
    }
    ~EnvironmentVariable()
    {
        if (m_wasSet)
            qputenv(m_name, m_before);
        else
            qunsetenv(m_name);
    }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    const char* m_name;
    bool m_wasSet;
    QByteArray m_before;
};

} // namespace test
