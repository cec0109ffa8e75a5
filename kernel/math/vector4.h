#pragma once

// The 4-component vector is the generic Vector<T,4>; this header exists so
// that code using only that form can say so.
#include "kernel/math/vector.h"
