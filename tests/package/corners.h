// What somebody's library offers; nothing of ours is seen here.
#pragma once

// The number of corners that the triangles of a unit square have at its welded vertices.
int countCorners();
