#include "ui/custom/WheelGlide.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double OnwardStep = 10;
constexpr double BackwardStep = 16;
constexpr double MaxDelta = 100;
constexpr int TicksAStep = 4;

double Ease(double t)
{
    return t < 0.5 ? 2 * t * t : 1 - 2 * (t - 1) * (t - 1);
}

}  // namespace

double WheelGlide::Share() const
{
    return m_ticksTotal > 0 ? m_delta * Ease(static_cast<double>(m_ticksLeft) / m_ticksTotal) : 0;
}

void WheelGlide::Turn(bool isUp)
{
    const double carried = Share();
    const bool turnsBack = isUp ? m_delta < 0 : m_delta > 0;
    const double step = turnsBack ? BackwardStep : OnwardStep;
    m_delta = std::clamp(carried + (isUp ? step : -step), -MaxDelta, MaxDelta);
    m_ticksTotal = static_cast<int>(std::lround(std::sqrt(std::abs(m_delta)))) * TicksAStep;
    m_ticksLeft = m_ticksTotal;
}

double WheelGlide::Tick()
{
    if (m_ticksLeft == 0) {
        return 0;
    }
    --m_ticksLeft;
    const double step = Share();
    if (m_ticksLeft == 0) {
        Stop();
    }
    return step;
}

void WheelGlide::Stop()
{
    m_delta = 0;
    m_ticksTotal = 0;
    m_ticksLeft = 0;
}
