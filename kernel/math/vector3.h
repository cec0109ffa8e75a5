#pragma once

// The 3-component vector is the generic Vector<T,3>; this header exists so
// that code using only that form can say so.
#include "kernel/math/vector.h"
