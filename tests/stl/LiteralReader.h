#pragma once

#include <algorithm>
#include <cctype>
#include <cstring>
#include <optional>
#include <vector>

#include <QByteArray>
#include <QFile>
#include <QString>

#include "core/math/Vector3D.h"

namespace test {

/// What a file holds before stitching.
struct LiteralSoup {
    std::vector<Vector3D<float>> corners;
    std::vector<Vector3D<float>> normals;
};

/// An STL reader as plain as can be: one byte or field at a time through QFile, each rule written down once
/// more in other words than in the library, which reads blocks and recognises facets by comparison. Both must
/// always agree.
class LiteralReader {
public:
    static std::optional<LiteralSoup> Load(const QString& fileName, int headerSize, bool forceBinary)
    {
        QFile file(fileName);
        if (!file.open(QIODevice::ReadOnly))
            return std::nullopt;
        if (forceBinary)
            return ReadBinary(file, headerSize);
        QByteArray probe = file.read(5);
        if (probe.size() < 5)
            return std::nullopt;
        const int found = probe.toLower() == "solid" ? 1 : FindSolid(file, probe, 5);
        if (found == 0)
            return std::nullopt;
        if (found == 1) {
            bool isBroken = false;
            LiteralSoup soup = ReadText(fileName, isBroken);
            if (isBroken)
                return std::nullopt;
            if (soup.corners.size() >= 3)
                return soup;
        }
        return ReadBinary(file, headerSize);
    }

    static LiteralSoup ReadText(const QString& fileName, bool& isBroken)
    {
        QFile file(fileName);
        LiteralSoup soup;
        isBroken = !file.open(QIODevice::ReadOnly | QIODevice::Text);
        char byte = 0;
        while (!isBroken && file.getChar(&byte) && byte != '\n') {
        }
        while (!isBroken && !file.atEnd()) {
            const QByteArray token = NextToken(file).toLower();
            if (token == "normal" || token == "vertex") {
                Vector3D<float> point;
                isBroken = !ReadPoint(file, point);
                if (!isBroken)
                    (token == "normal" ? soup.normals : soup.corners).push_back(point);
            } else if (token == "endsolid") {
                QByteArray probe;
                if (FindSolid(file, probe, 5) != 1)
                    break;
            }
        }
        return soup;
    }

    static int FindSolid(QFile& file, QByteArray& probe, int size)
    {
        for (int steps = 0; steps <= 10240;) {
            char byte = 0;
            if (file.atEnd())
                return 2;
            if (!file.getChar(&byte))
                return 0;
            if (std::isspace(static_cast<unsigned char>(byte))) {
                probe.clear();
                continue;
            }
            probe.append(byte);
            const bool isLonger = probe.size() > size;
            if (isLonger)
                probe.remove(0, 1);
            if ((isLonger || probe.size() == size) && probe.toLower() == "solid")
                return 1;
            ++steps;
        }
        return 2;
    }

    static QByteArray NextToken(QFile& file)
    {
        QByteArray token;
        char byte = 0;
        bool isRead = file.getChar(&byte);
        while (isRead && !IsTokenCharacter(byte))
            isRead = file.getChar(&byte);
        while (isRead && IsTokenCharacter(byte)) {
            token.append(byte);
            isRead = file.getChar(&byte);
        }
        return token.left(254);
    }

private:
    static bool IsTokenCharacter(char byte)
    {
        return byte != 0 && std::strchr("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-.+",
                                        byte) != nullptr;
    }

    static bool ReadPoint(QFile& file, Vector3D<float>& point)
    {
        for (float* const number : {&point.x, &point.y, &point.z}) {
            const QByteArray token = NextToken(file);
            if (token.isEmpty())
                return false;
            *number = static_cast<float>(QString::fromLatin1(token).toDouble());
        }
        return true;
    }

    static std::optional<LiteralSoup> ReadBinary(QFile& file, int headerSize)
    {
        const qint64 bytes = file.size() - headerSize - 4;
        if (headerSize < 0 || headerSize > 1024 || bytes < 0)
            return std::nullopt;
        file.seek(headerSize);
        qint32 claimed = 0;
        file.read(reinterpret_cast<char*>(&claimed), 4);
        qint64 count = bytes / 50;
        if (count < 1)
            return std::nullopt;
        if (bytes > count * 50 && bytes == count * 50 + 48)
            ++count;
        if (claimed != count)
            return std::nullopt;
        LiteralSoup soup;
        soup.corners.resize(static_cast<std::size_t>(3 * count));
        soup.normals.resize(static_cast<std::size_t>(count));
        for (std::size_t i = 0; i < soup.normals.size(); ++i) {
            char normal[12], word[2];
            file.read(normal, 12);
            for (std::size_t c = 0; c < 3; ++c)
                file.read(reinterpret_cast<char*>(&soup.corners[3 * i + c]), 12);
            file.read(word, 2);
        }
        return soup;
    }
};

} // namespace test
