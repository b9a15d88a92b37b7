#pragma once

#include <cstdio>

namespace scripted {

/// An empty stream that stands for an open file. The script records its end as "fclose()".
std::FILE* recordedFile();

}  // namespace scripted
