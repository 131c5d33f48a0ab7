#include <algorithm>

#include <QFile>

#include "apps/krmodel/ByteStream.h"
#include "apps/krmodel/LossList.h"
#include "apps/krmodel/ObjFormat.h"

namespace krmodel::obj {

namespace {

struct Counts {
    qint64 relativeFaces = 0;
    qint64 colouredVertices = 0;
    qint64 normals = 0;
    qint64 lines = 0;
    qint64 points = 0;
    qint64 freeForms = 0;
    qint64 parts = 0;
};

int CountWords(const QByteArray& line)
{
    int count = 0;
    bool isInWord = false;
    for (const char character : line) {
        const bool isBlank = character == ' ' || character == '\r' || character == '\t';
        count += !isBlank && !isInWord ? 1 : 0;
        isInWord = !isBlank;
    }
    return count;
}

void TakeFace(Counts& counts, const QByteArray& line)
{
    counts.relativeFaces += line.contains('-') ? 1 : 0;
}

/// "v x y z r g b"
void TakeVertex(Counts& counts, const QByteArray& line)
{
    constexpr int kWordsWithColour = 7;
    counts.colouredVertices += CountWords(line) >= kWordsWithColour ? 1 : 0;
}

template<qint64 Counts::*Counter>
void Count(Counts& counts, const QByteArray&)
{
    ++(counts.*Counter);
}

// The commonest first.
constexpr struct {
    const char* keyword;
    void (*take)(Counts& counts, const QByteArray& line);
} kStatements[] = {{"f", TakeFace},
                   {"v", TakeVertex},
                   {"vn", Count<&Counts::normals>},
                   {"g", Count<&Counts::parts>},
                   {"o", Count<&Counts::parts>},
                   {"l", Count<&Counts::lines>},
                   {"p", Count<&Counts::points>},
                   {"curv", Count<&Counts::freeForms>},
                   {"curv2", Count<&Counts::freeForms>},
                   {"surf", Count<&Counts::freeForms>}};

void TakeLine(Counts& counts, const QByteArray& line)
{
    const QByteArray keyword = QByteArray::fromRawData(line.constData(), std::max(line.indexOf(' '), 0));
    for (const auto& statement : kStatements)
        if (keyword == statement.keyword)
            return statement.take(counts, line);
}

} // namespace

std::vector<Loss> Scan(const QString& fileName, const Model&)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    Counts counts;
    VisitPieces(file, '\n', [&](const QByteArray& line) { TakeLine(counts, line); });
    LossList losses;
    losses.Add("relative-indices", counts.relativeFaces,
               "%1 {face with relative (negative) indices, which is|faces with relative (negative) indices, "
               "which are} left out");
    losses.Add("free-forms", counts.freeForms, "%1 free-form {curve or surface|curves and surfaces}");
    losses.Add("lines", counts.lines, "%1 line {element|elements}");
    losses.Add("points", counts.points, "%1 point {element|elements}");
    losses.Add("vertex-colours", counts.colouredVertices, "the {colour|colours} of %1 {vertex|vertices}");
    losses.Add("normals", counts.normals, "%1 {normal, which is|normals, which are} worked out anew");
    // One names the whole.
    losses.Add("parts", counts.parts > 1 ? counts.parts : 0, "the division into %1 groups and objects");
    return losses.Get();
}

} // namespace krmodel::obj
