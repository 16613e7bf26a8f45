#include "session/Session.h"

#include "platform/PrivilegedOpen.h"
#include "recovery/engines/EngineMaker.h"
#include "storage/DriveRegistry.h"

Session::Session() : Session(std::make_shared<EngineMaker>()) {}

Session::Session(std::shared_ptr<IEngineMaker> engines)
    : m_engines(std::move(engines)), m_history(std::make_shared<ScanHistory>())
{
}

Session::~Session() = default;

void Session::AskForRights()
{
    DriveRegistry::Instance().SetPrivilegedOpener(
        [](const std::filesystem::path& node, FileHandle& outHandle) {
            return OpenDevicePrivileged(node, outHandle);
        });
}

TargetList Session::ListTargets(const ProgressFunction& progress)
{
    return m_lister.List(progress);
}

ResolvedTarget Session::Resolve(const std::string& text)
{
    return ResolveTarget(text, m_lister);
}

OpenOutcome Session::Open(const ScanTarget& target, ScanDepth depth) const
{
    return Opener(target, depth)();
}

std::function<OpenOutcome()> Session::Opener(const ScanTarget& target, ScanDepth depth) const
{
    return [history = m_history, engines = m_engines, target, depth] {
        return ScanSession::Open(history, *engines, target, depth);
    };
}
