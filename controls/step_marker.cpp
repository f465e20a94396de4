#include "controls/step_marker.h"

#include <algorithm>
#include <cmath>

#include "controls/handles.h"

namespace varnel::controls {

namespace {

constexpr int kDots = 8;
constexpr COLORREF kDotLit = RGB(0x33, 0x33, 0x33);
constexpr COLORREF kDotDim = RGB(0xC8, 0xC8, 0xC8);
constexpr COLORREF kCheck = RGB(0x2E, 0x8B, 0x3E);

void PaintRing(HDC dc, const RECT& r, int frame) {
  const int size = std::min(r.right - r.left, r.bottom - r.top);
  const double cx = (r.left + r.right) / 2.0, cy = (r.top + r.bottom) / 2.0;
  const double radius = size * 0.36, dot = std::max(1.5, size * 0.09);
  const int lit = frame % kDots;
  for (int i = 0; i < kDots; ++i) {
    const double angle = 2 * 3.14159265358979 * i / kDots;
    const double x = cx + radius * std::sin(angle), y = cy - radius * std::cos(angle);
    UniqueBrush brush(CreateSolidBrush(i == lit ? kDotLit : kDotDim));
    HGDIOBJ old = SelectObject(dc, brush.get());
    Ellipse(dc, static_cast<int>(x - dot), static_cast<int>(y - dot),
            static_cast<int>(x + dot + 1), static_cast<int>(y + dot + 1));
    SelectObject(dc, old);
  }
}

void PaintCheck(HDC dc, const RECT& r) {
  const int size = std::min(r.right - r.left, r.bottom - r.top);
  const int x = r.left + (r.right - r.left - size) / 2, y = r.top + (r.bottom - r.top - size) / 2;
  UniquePen pen(CreatePen(PS_SOLID, std::max(2, size / 7), kCheck));
  HGDIOBJ old = SelectObject(dc, pen.get());
  const POINT tick[] = {{x + size * 2 / 10, y + size * 5 / 10},
                        {x + size * 4 / 10, y + size * 7 / 10},
                        {x + size * 8 / 10, y + size * 3 / 10}};
  Polyline(dc, tick, 3);
  SelectObject(dc, old);
}

}  // namespace

void PaintStepMarker(const DRAWITEMSTRUCT& item, MarkerLook look, int frame) {
  HDC dc = item.hDC;
  FillRect(dc, &item.rcItem, GetSysColorBrush(COLOR_BTNFACE));
  const int saved = SaveDC(dc);
  SelectObject(dc, GetStockObject(NULL_PEN));
  if (look == MarkerLook::Running) PaintRing(dc, item.rcItem, frame);
  if (look == MarkerLook::Reached) PaintCheck(dc, item.rcItem);
  RestoreDC(dc, saved);
}

}  // namespace varnel::controls
