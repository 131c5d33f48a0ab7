#pragma once

#include <QRegularExpression>

#include "apps/krmodel/Formats.h"
#include "apps/krmodel/Texts.h"

namespace krmodel {

/// Gathers losses, those that there are.
class LossList {
public:
    /// @param kind  a word for programs; it stays
    /// @param text  for people; "%1" stands for the count, of "{is|are}" the former for one and the latter
    /// for
    ///              more
    void Add(const char* kind, qint64 count, const char* text)
    {
        if (count > 0)
            m_losses.push_back({QLatin1String(kind), count, InNumber(text, count)});
    }
    const std::vector<Loss>& Get() const { return m_losses; }

private:
    static QString InNumber(const char* text, qint64 count)
    {
        const QRegularExpression choice(QStringLiteral("\\{([^|]*)\\|([^}]*)\\}"));
        return QString::fromUtf8(text)
            .replace(choice, count == 1 ? QStringLiteral("\\1") : QStringLiteral("\\2"))
            .replace(QStringLiteral("%1"), CountText(count));
    }

    std::vector<Loss> m_losses;
};

} // namespace krmodel
