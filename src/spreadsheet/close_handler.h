#pragma once

#include <functional>

namespace korvex {

class Workbook;

// How a workbook's Close() reaches the application that owns it. The workbook is destroyed during
// the call, so Close() moves the handler out first and touches nothing afterwards.
using CloseHandler = std::function<void(const Workbook& closing)>;

}  // namespace korvex
