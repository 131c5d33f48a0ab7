#pragma once

#include <QString>
#include <QtGlobal>

#include <gtest/gtest.h>

namespace test {

/// Counts what Qt would print while it lives: the libraries stay silent.
class MessageCounter {
public:
    MessageCounter() : m_previous(qInstallMessageHandler(Note)) { printedCount = 0; }
    ~MessageCounter() { qInstallMessageHandler(m_previous); }
    MessageCounter(const MessageCounter&) = delete;
    MessageCounter& operator=(const MessageCounter&) = delete;

    int Count() const { return printedCount; }

private:
    static void Note(QtMsgType, const QMessageLogContext&, const QString& text)
    {
        ++printedCount;
        ADD_FAILURE() << "printed: " << text.toStdString();
    }

    static inline int printedCount = 0;
    QtMessageHandler m_previous;
};

} // namespace test
