/// A small kit for large sparse systems of linear equations: vectors, matrices, preconditioners, conjugate gradients.
///
/// It is made for the matrices of meshes: a handful of entries in each row, put together entry by entry, symmetric and
/// positive definite or nearly so. The caller owns the loop, and may stop it, report its progress or look at the
/// solution after every step:
///
///     znGeom::ConjugateGradient solver(n);
///     solver.A().addToElement(row, column, value); // for every term of every equation
///     solver.initDiagonalPreconditioner();
///     solver.initialize(rightHandSide, start);
///     while (!solver.iterate(tolerance, smallness).isDone()) {}
///     use(solver.x());
///
/// Nothing here runs on threads or is locked: an object belongs to one thread at a time, and any number of threads may
/// read a constant one. Indices are trusted. The sums are taken in the order that each function names, so the same
/// input gives the same bits everywhere. Nothing is thrown but what the standard containers throw.
#pragma once

#include "znGeom/solvers/conjugate_gradient.h"
#include "znGeom/solvers/n_vector.h"
#include "znGeom/solvers/preconditioner.h"
#include "znGeom/solvers/sparse_matrix.h"
