#include "storage/DriveRegistry.h"

DriveRegistry& DriveRegistry::Instance()
{
    static DriveRegistry registry;
    return registry;
}

std::uint32_t DriveRegistry::NumberOf(const std::filesystem::path& device)
{
    for (const auto& [number, known] : m_devices) {
        if (known == device) {
            return number;
        }
    }
    for (std::uint32_t number = 0; number < NumberLimit; ++number) {
        if (m_devices.try_emplace(number, device).second) {
            return number;
        }
    }
    return NoNumber;
}

std::filesystem::path DriveRegistry::DeviceOf(std::uint32_t diskNumber) const
{
    const auto found = m_devices.find(diskNumber);
    return found != m_devices.end() ? found->second : std::filesystem::path();
}

void DriveRegistry::Forget(std::uint32_t diskNumber)
{
    m_devices.erase(diskNumber);
}

ResultCode DriveRegistry::Open(std::uint32_t diskNumber, FileHandle& outHandle) const
{
    const auto found = m_devices.find(diskNumber);
    return found != m_devices.end() ? outHandle.OpenForReading(found->second) : ResultFileNotFound;
}
