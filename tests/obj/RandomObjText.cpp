#include "tests/obj/RandomObjText.h"

#include "tests/common/Bytes.h"

namespace test {

namespace {

// The pieces of a text between bars; the no-break spaces, other signs and marks are written as their bytes.
QByteArrayList Pieces(const char* text)
{
    return QByteArray(text).split('|');
}

const QByteArrayList kSeparators = Pieces(
    "  |   |\t| \t|\t |\\ |\\\n |\\\n|\\\t\n|\\ \r\n | \\\n\t| \\\n|\302\240| \302\240 |\\\\ |\v|\f |\r");

const QByteArrayList kLineEnds =
    Pieces(
        "\r\n|\n\n|\r|\n\r| \n|\t\n|\\\n|\\ \n|\\\t\r\n|\\\\\n|\\\n\n||\\|\303\244\\\n|\\\303\244\n|# \n") +
    QByteArrayList{Bytes("\0"), Bytes("\\\0"), Bytes("\0\n")};

const QByteArrayList kOddNumbers = Pieces(
    "inf|-inf|nan|NaN|INF|infinity|1e400|-1e400|1e-400|1e39|-1e39|1e-46|0x10|1,5|+.5|5.|.|-.5e1|1e5|1E+5|1e|"
    "1e+|"
    "--1|+-1|-0|-0.0|1.5abc|abc|1_0|123456789012345678901234.5|0.1234567890123456789012345|16777217|"
    "3.4028235677973366e38|1.00000005960464477539062|0.000001|0.00000100000000000001|1e-6|-1e-7|\302\2401|"
    "1\302\240|\331\241|\342\210\2221|1\303|1d5|1f|00001|1.2.3|1\\2|\t1|2\t|1/2|#1|1e99999999999");

const QByteArrayList kOddIndices = Pieces(
    "0|-1|-2|+1|+3|1.5|1e2|2147483647|2147483648|-2147483648|-2147483649|99999999999|-"
    "99999999999999999999999|"
    "abc|1x|x1|--1|+-1|+|-|007|0000000000000000000001|\331\241|\302\2401|1\302\240|\t2|2\t|\v1|1,2|1,000|0x1|"
    "1\303|1\\|\\1|nan||1000000|\357\274\221");

const QByteArrayList kOddCorners = Pieces("/|//|///|1/|/1|1//|//1|1/2//3|1///2|1/2/|1/2/3/4|1/ 2");

const QByteArrayList kNames = Pieces("a|b|c|d|A|wood|wood\\oak|\303\244|\303|\377\376|#a|a#|\357\273\277a|"
                                     "\360\237\223\246|\355\240\200|a\tb|lib.mtl|"
                                     "other.mtl|missing.mtl|.|..|\"a\"|a.png|1");

const QByteArrayList kNoise =
    Pieces("\\|\\|\\\n|\n|\n|\r|\r\n|\t| |#|/|//|\303|\357\273\277|\177|\200|\1|-|.|e|1|v|f|usemtl|\377") +
    QByteArrayList{Bytes("\0")};

const QByteArrayList kOddLines = Pieces("|#|# v 1 2 3| # v 1 2 3|\t# c|#\\|\357\273\277v 1 2 3|\357\273\277# "
                                        "v 1 2 3|\357\273\277\357\273\277v 1 2 3|"
                                        "vn 0 0 1|o cube|g a b|s off|l 1 2 3|V 1 2 3|F 1 2 3|vp 1 2 "
                                        "3|usemtl|mtllib|usemtl a b|mtllib lib.mtl other.mtl|"
                                        "v|f|vt|v1 2 3|call f 1 2 3|newmtl|newmtl a b|NEWMTL a|Ns 1 2|Kd "
                                        "1|Kd 1 2|Kd spectral f.rfl 1|Kd xyz 1 2 3|"
                                        "Tr 0.5|map_Ka a.png|map_bump a.png|map_Kd");

} // namespace

QByteArray RandomObjText::Separator()
{
    return OneIn(12) ? OneOf(kSeparators) : QByteArray(" ");
}

QByteArray RandomObjText::LineEnd()
{
    return OneIn(8) ? OneOf(kLineEnds) : QByteArray("\n");
}

QByteArray RandomObjText::Number()
{
    if (OneIn(6))
        return OneOf(kOddNumbers);
    const double value = double(Below(20'000) - 10'000) / (OneIn(2) ? 1000.0 : 7.0);
    return OneIn(2) ? QByteArray::number(Below(20) - 5) : QByteArray::number(value, 'g', 1 + Below(17));
}

QByteArray RandomObjText::Index()
{
    return OneIn(10) ? OneOf(kOddIndices) : QByteArray::number(1 + Below(6));
}

QByteArray RandomObjText::Corner()
{
    switch (Below(12)) {
    case 0:
        return Index() + "//" + Index();
    case 1:
        return Index() + "/" + Index() + "/" + Index();
    case 2:
    case 3:
    case 4:
        return Index() + "/" + Index();
    case 5:
        return OneOf(kOddCorners);
    default:
        return Index();
    }
}

QByteArray RandomObjText::Name()
{
    return OneIn(2) ? QByteArray(1, char('a' + Below(4))) : OneOf(kNames);
}

QByteArray RandomObjText::Statement(const QByteArray& keyword, int words, QByteArray (RandomObjText::*word)())
{
    QByteArray line = OneIn(20) ? Separator() + keyword : keyword;
    for (int i = 0; i < words; ++i)
        line += Separator() + (this->*word)();
    return OneIn(20) ? line + Separator() : line;
}

QByteArray RandomObjText::ObjLine()
{
    switch (Below(12)) {
    case 0:
    case 1:
    case 2:
        return Statement("v", OneIn(3) ? Below(8) : 3, &RandomObjText::Number);
    case 3:
    case 4:
        return Statement("vt", OneIn(3) ? Below(5) : 2, &RandomObjText::Number);
    case 5:
    case 6:
    case 7:
    case 8:
        return Statement("f", OneIn(3) ? Below(9) : 3, &RandomObjText::Corner);
    case 9:
        return Statement("usemtl", OneIn(10) ? Below(3) : 1, &RandomObjText::Name);
    case 10:
        return OneIn(3) ? Statement("mtllib", 1, &RandomObjText::Name) : QByteArray("mtllib lib.mtl");
    default:
        return OneOf(kOddLines);
    }
}

QByteArray RandomObjText::MtlLine()
{
    switch (Below(10)) {
    case 0:
    case 1:
        return Statement("newmtl", OneIn(10) ? Below(3) : 1, &RandomObjText::Name);
    case 2:
    case 3:
        return Statement(OneOf({"Ns", "Ni", "d"}), OneIn(4) ? Below(5) : 1, &RandomObjText::Number);
    case 4:
        return Statement("illum", OneIn(4) ? Below(5) : 1, &RandomObjText::Index);
    case 5:
    case 6:
    case 7:
        return Statement(OneOf({"Ka", "Kd", "Ks", "Ke"}), OneIn(4) ? Below(6) : 3, &RandomObjText::Number);
    case 8:
        return Statement(OneOf({"map_Kd", "map_Ke", "map_d", "map_Bump", "bump", "map_bump", "map_Ks"}),
                         OneIn(2) ? Below(6) : 1, &RandomObjText::Name);
    default:
        return OneOf(kOddLines);
    }
}

void RandomObjText::Damage(QByteArray& text)
{
    for (int count = 1 + Below(4); count > 0; --count) {
        const int at = Below(text.size() + 1);
        text.replace(at, Below(3), OneIn(4) ? QByteArray(1, char(Below(256))) : OneOf(kNoise));
    }
}

QByteArray RandomObjText::Obj()
{
    QByteArray text;
    // Faces need vertices, or all of them would be dropped.
    for (int count = OneIn(4) ? 0 : 4 + Below(4); count > 0; --count)
        text += Statement("v", 3, &RandomObjText::Number) + '\n';
    for (int count = Below(14); count > 0; --count)
        text += ObjLine() + LineEnd();
    if (OneIn(3))
        Damage(text);
    return text;
}

QByteArray RandomObjText::Mtl()
{
    QByteArray text;
    for (int count = Below(14); count > 0; --count)
        text += MtlLine() + LineEnd();
    if (OneIn(3))
        Damage(text);
    return text;
}

} // namespace test
