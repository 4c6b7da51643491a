#pragma once

// Ends the session or the machine. The program asks only for power-off;
// the other modes are there for completeness.
class Power
{
public:
    enum Mode { LogOff = 0, ShutDown = 1, Restart = 2, PowerOff = 8 };
    virtual ~Power() = default;
    // Returns at once; the system goes down while the program ends.
    virtual void shutdownWindows(int iMode) = 0;
};

// The desktop's login manager (logind, over the system bus): log off ends
// the user's session, shut down and power off power the machine off, restart
// reboots it. Other modes do nothing. Failures are not looked at.
class LogindPower : public Power
{
public:
    void shutdownWindows(int iMode) override;
};
