// How a list glides after the wheel was turned: what is scrolled by tick after tick, until it stops.
#pragma once

class WheelGlide
{
public:
    static constexpr int TimerId = 10;
    static constexpr int TickMilliseconds = 50;

    // What is still to come goes into the new motion; turning back is answered more strongly.
    void Turn(bool isUp);
    // Pixels to scroll by now, up for a positive number. The last tick ends the motion.
    double Tick();
    void Stop();
    bool IsRunning() const { return m_ticksLeft > 0; }

    double Delta() const { return m_delta; }
    int TicksTotal() const { return m_ticksTotal; }
    int TicksLeft() const { return m_ticksLeft; }

private:
    double Share() const;

    double m_delta = 0;  // of the wheel, with what came before
    int m_ticksTotal = 0;
    int m_ticksLeft = 0;
};
