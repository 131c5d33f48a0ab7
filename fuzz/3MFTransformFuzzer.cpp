#include <cstdint>

#include "fileformat/3mf/Model3MF.h"
#include "fuzz/Require.h"
#include "tests/3mf/PlainModelReader.h"

// Transform texts of any characters, read and written as plainly.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const Matrix4<double> matrix = Model3MF::ConvertFrom3MFMatStrToMat(text);
    fuzz::Require(test::HaveSameNumbers(matrix, test::PlainModel::MatrixFrom(text)));
    const QString written = Model3MF::ConvertFromMatTo3MFMatStr(matrix);
    fuzz::Require(written == test::PlainModel::TextFrom(matrix));
    // Six significant digits are read as they were written.
    const Matrix4<double> again = Model3MF::ConvertFrom3MFMatStrToMat(written);
    fuzz::Require(Model3MF::ConvertFromMatTo3MFMatStr(again) == written);
    return 0;
}
