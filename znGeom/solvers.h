/// Sparse linear systems.
#pragma once

#include "znGeom/solvers/conjugate_gradient.h"
#include "znGeom/solvers/n_vector.h"
#include "znGeom/solvers/preconditioner.h"
#include "znGeom/solvers/sparse_matrix.h"
#include "znGeom/solvers/sparse_solver.h"
