// The base of the windows that show how far a task is: its worker, its board, and the question whether to stop.
#pragma once

#include "app/popups/PopUpWnd.h"
#include "app/tasks/CancelQuestion.h"
#include "app/tasks/TaskContext.h"

#include <condition_variable>
#include <optional>
#include <thread>

// What a kind of task says and asks.
struct TaskLook
{
    TaskKind kind;
    const char* skinFile;
    const char* section;      // of its controls' texts
    const char* questionKey;  // whether to stop
    int questionHeight;       // it is 350 wide
    const char* questionSection = "Messages";
};

class CTaskWnd : public CPopUpWnd
{
public:
    explicit CTaskWnd(const TaskLook& look);
    CTaskWnd(const CTaskWnd&) = delete;
    CTaskWnd& operator=(const CTaskWnd&) = delete;
    ~CTaskWnd() override;

    void InitWindow() override;
    void OnClick(const Notification& notification) override;
    const ProgressBoard& Board() const { return m_board; }

protected:
    // The worker's thread: all of the task.
    virtual void RunTask(const TaskContext& context) = 0;
    // Before the worker starts.
    virtual void OnTaskInit() {}
    // The window's own end when the user has stopped the task; the worker may have closed it before.
    virtual std::optional<int> CodeOfCancel() const { return std::nullopt; }
    // True when there is nothing to ask, and the window closes as done.
    virtual bool IsDone() const { return false; }
    virtual void OnRows(const std::vector<ReportRow>&) {}
    // Controls were shown or hidden by the worker.
    virtual void OnVisibilities() {}
    virtual void OnOpening(bool) {}
    // What the user is asked belongs to this window.
    virtual QWidget* OwnerOfQuestions() { return this; }

    void OnWindowInit() override;
    void OnDismiss() override { Cancel(); }
    void OnClosed() override;
    void Cancel();
    TaskGate& Gate() const { return m_gate; }
    // Ends the worker, which the derived class's members must outlive: for its destructor.
    void StopWorker();

private:
    // An answer that the worker waits for.
    struct Answering
    {
        std::mutex lock;
        std::condition_variable hasCome;
        std::optional<int> code;

        void Give(int given);
        int Wait();
    };

    TaskHost MakeHost();
    int AskUser(const TaskBox& box);
    void Flush();
    void RunGuarded();

    const TaskLook m_look;
    TaskGate& m_gate;
    CancelQuestion m_question;
    ProgressBoard m_board;
    std::thread m_worker;
    std::atomic<bool> m_hasEnded = false;  // the worker
    std::mutex m_answeringLock;
    std::shared_ptr<Answering> m_answering;  // null when nothing is asked
    bool m_isStopped = false;                // no more questions
};
