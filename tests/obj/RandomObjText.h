#pragma once

#include <random>

#include <QByteArray>
#include <QByteArrayList>

namespace test {

/// Texts that are OBJ files or material libraries more or less: statements of every shape, words of every
/// spelling, lines that end in every way, and now and then a byte that does not belong there.
class RandomObjText {
public:
    explicit RandomObjText(unsigned seed) : m_random(seed) {}

    QByteArray Obj();
    QByteArray Mtl();

    /// One of 0 .. limit - 1.
    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

private:
    QByteArray OneOf(const QByteArrayList& choices) { return choices[Below(choices.size())]; }
    bool OneIn(int count) { return Below(count) == 0; }

    QByteArray Separator();
    QByteArray LineEnd();
    QByteArray Number();
    QByteArray Index();
    QByteArray Corner();
    QByteArray Name();
    QByteArray ObjLine();
    QByteArray MtlLine();
    QByteArray Statement(const QByteArray& keyword, int words, QByteArray (RandomObjText::*word)());
    void Damage(QByteArray& text);

    std::mt19937 m_random;
};

} // namespace test
