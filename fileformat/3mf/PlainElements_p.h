#pragma once

#include "core/math/TriangleFace.h"
#include "core/math/Vector3D.h"

namespace kr::package3mf {

/// Reads <vertex x="..." y="..." z="..."/> at @p position, with decimal numbers between double quotes.
/// @param end  the last '<' of the document: nothing behind it is read
/// @return the position behind it; null for anything else, however small the difference, and close to the end
const char* ReadPlainVertex(const char* position, const char* end, Vector3D<float>& vertex);

/// Reads <triangle v1="..." v2="..." v3="..."/> in the same way, with positive integers. Properties pid, p1,
/// p2 and p3 may follow, each once and in this order; they mean nothing here.
const char* ReadPlainTriangle(const char* position, const char* end, TriangleFace& face);

/// Behind blanks, tabs and line ends. Something else must follow them.
const char* SkipWhiteSpace(const char* position);

} // namespace kr::package3mf
