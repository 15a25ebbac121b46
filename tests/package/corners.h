// What somebody's library offers; nothing of ours is seen here.
#pragma once

// The number of corners of a triangle.
int countCorners();
