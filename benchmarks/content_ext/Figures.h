#pragma once

#include "support/Table.h"

namespace VorselKelp::benchmarks {

/// What it takes to show the next message of a carousel, a layout pass included.
Line carouselPaging();

}  // namespace VorselKelp::benchmarks
