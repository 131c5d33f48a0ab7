#include "apps/krmodel/Texts.h"

#include <QLocale>

namespace krmodel {

namespace {

constexpr int kLongestName = 40;
constexpr int kKeptEnd = 15;

bool SteersTerminal(QChar character)
{
    const QChar::Category category = character.category();
    return category == QChar::Other_Control || category == QChar::Other_Format ||
           category == QChar::Separator_Line || category == QChar::Separator_Paragraph;
}

} // namespace

QString TextOrDash(const QString& text)
{
    return text.isEmpty() ? QStringLiteral("-") : text;
}

QString CountText(qint64 count)
{
    return QLocale(QLocale::English).toString(count);
}

QString NumberText(double value)
{
    return QString::number(value, 'g', 7);
}

QString MoreText(size_t count)
{
    return count <= kMostLines ? QString()
                               : QStringLiteral("  and %1 more\n").arg(CountText(qint64(count - kMostLines)));
}

QString NameText(const QString& name)
{
    QString text = name.size() <= kLongestName
                       ? name
                       : name.left(kLongestName - kKeptEnd - 1) + QChar(0x2026) + name.right(kKeptEnd);
    for (QChar& character : text)
        if (SteersTerminal(character))
            character = QLatin1Char('?');
    return text;
}

} // namespace krmodel
