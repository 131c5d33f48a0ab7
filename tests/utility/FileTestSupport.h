#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QtGlobal>

#include <string>

inline void WriteFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

inline std::string ReadFile(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll().toStdString();
}

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
