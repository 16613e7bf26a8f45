// The signals that ask a program with windows to end: INT, TERM and HUP become something that its message loop can wait for.
#pragma once

// One for a process. From its making on the first of each signal does not end the process, the
// next one does; so does any after its end.
class TerminationSignals
{
public:
    TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;
    ~TerminationSignals();

    // Readable once a signal has come; -1 when the system gave no pipe, and the signals end the process then. It stays ours.
    int Descriptor() const;
    // After so many seconds the process ends as by a further signal, unless this object has gone by then: whoever has asked
    // once does not wait for a disk that never answers.
    static void EndWithin(unsigned seconds);
};
