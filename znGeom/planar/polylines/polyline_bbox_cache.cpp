#include "znGeom/planar/polylines/polyline_bbox_cache.h"

namespace znGeom {

const znLinear::Range3d& PolylineBBoxCache::getSegmentBBox(int i)
{
    if (m_boxes.empty()) {
        m_boxes.setSize(m_line->getNumVertices() - 1);
        for (int j = 0; j < m_boxes.size(); ++j) {
            m_boxes[j].set(m_line->getVertex(j).point);
            m_boxes[j].include(m_line->getVertex(j + 1).point);
        }
    }
    return m_boxes[i];
}

} // namespace znGeom
