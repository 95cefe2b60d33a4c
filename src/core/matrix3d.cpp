#include "core/matrix3d.h"

template class matrix3D<matrix<double>>;
