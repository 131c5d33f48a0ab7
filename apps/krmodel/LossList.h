#pragma once

#include "apps/krmodel/Formats.h"
#include "apps/krmodel/Texts.h"

namespace krmodel {

/// Gathers losses, those that there are.
class LossList {
public:
    /// @param kind  a word for programs; it stays
    /// @param text  for people; "%1" stands for the count
    void Add(const char* kind, qint64 count, const char* text)
    {
        if (count > 0)
            m_losses.push_back({QLatin1String(kind), count,
                                QString::fromUtf8(text).replace(QStringLiteral("%1"), CountText(count))});
    }
    const std::vector<Loss>& Get() const { return m_losses; }

private:
    std::vector<Loss> m_losses;
};

} // namespace krmodel
