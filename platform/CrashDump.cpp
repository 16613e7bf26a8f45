#include "platform/CrashDump.h"

#include "platform/ByteView.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <elf.h>
#include <execinfo.h>
#include <fcntl.h>
#include <link.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

namespace {

constexpr int MostFrames = 64;
constexpr std::int64_t SecondsOfDay = 86400;

struct Prepared
{
    std::array<char, 1024> otherFolder = {};  // with "/" at its end; empty for none
    std::array<char, 64> buildId = {};        // in hexadecimal digits
    std::array<char, 256> exceptionText = {};
    std::int64_t zoneSeconds = 0;  // to be added to universal time
};

Prepared prepared;

// Text that is put together without allocating; what does not fit is left out.
template <std::size_t Size>
class FixedText
{
public:
    FixedText& operator<<(std::string_view text)
    {
        for (const char character : text) {
            if (m_length < Size) {
                m_text[m_length++] = character;
            }
        }
        return *this;
    }
    FixedText& Number(std::uint64_t value, unsigned base = 10, int digits = 1)
    {
        std::array<char, 24> turned = {};
        int count = 0;
        for (; value != 0 || count < digits; value /= base) {
            turned[static_cast<std::size_t>(count++)] = "0123456789abcdef"[value % base];
        }
        while (count != 0) {
            *this << std::string_view(&turned[static_cast<std::size_t>(--count)], 1);
        }
        return *this;
    }
    const char* Terminated()
    {
        m_text[std::min(m_length, Size - 1)] = '\0';
        return m_text.data();
    }
    void WriteTo(int descriptor)
    {
        if (::write(descriptor, m_text.data(), m_length) < 0) {
            m_length = 0;  // nothing can be done about it here
        }
        m_length = 0;
    }

private:
    std::array<char, Size> m_text = {};
    std::size_t m_length = 0;
};

template <std::size_t Size>
void CopyText(std::array<char, Size>& to, std::string_view from)
{
    const std::size_t length = std::min(from.size(), Size - 1);
    std::copy_n(from.begin(), length, to.begin());
    to[length] = '\0';
}

struct CivilDate
{
    std::int64_t year = 0;
    unsigned month = 0;
    unsigned day = 0;
};

// The calendar of a number of days since 1970: the library's own may not be called in a signal handler. Counts in eras of 400
// years that begin in March, so that a leap day ends its year.
CivilDate DateOf(std::int64_t days)
{
    days += 719468;
    const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const auto dayOfEra = static_cast<unsigned>(days - era * 146097);
    const unsigned yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned monthFromMarch = (5 * dayOfYear + 2) / 153;
    CivilDate date;
    date.day = dayOfYear - (153 * monthFromMarch + 2) / 5 + 1;
    date.month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    date.year = era * 400 + yearOfEra + (date.month <= 2 ? 1 : 0);
    return date;
}

template <std::size_t Size>
void AppendDumpName(FixedText<Size>& name)
{
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const std::int64_t local = std::max<std::int64_t>(0, now.tv_sec + prepared.zoneSeconds);
    const CivilDate date = DateOf(local / SecondsOfDay);
    const auto second = static_cast<std::uint64_t>(local % SecondsOfDay);
    name.Number(static_cast<std::uint64_t>(date.year));
    for (const std::uint64_t part :
         {std::uint64_t{date.month}, std::uint64_t{date.day}, second / 3600, second / 60 % 60,
          second % 60, static_cast<std::uint64_t>(now.tv_nsec) / 1000000}) {
        name << "-";
        name.Number(part, 10, 2);
    }
    name << ".dmp";
}

// Not through a link: the current directory may be one that others write to.
int OpenDump()
{
    constexpr int Flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW;
    FixedText<512> name;
    AppendDumpName(name);
    const int here = ::open(name.Terminated(), Flags, S_IRUSR | S_IWUSR);
    if (here >= 0 || prepared.otherFolder[0] == '\0') {
        return here;
    }
    FixedText<2048> path;
    path << prepared.otherFolder.data() << name.Terminated();
    return ::open(path.Terminated(), Flags, S_IRUSR | S_IWUSR);
}

void WriteRegisters(int file, const void* context)
{
    FixedText<1024> text;
#if defined(__x86_64__)
    constexpr std::array Names = {"r8",  "r9",  "r10", "r11", "r12", "r13", "r14", "r15", "rdi",
                                  "rsi", "rbp", "rbx", "rdx", "rax", "rcx", "rsp", "rip"};
    const auto& registers = static_cast<const ucontext_t*>(context)->uc_mcontext.gregs;
    for (std::size_t index = 0; index < Names.size(); ++index) {
        text << Names[index] << " ";
        text.Number(static_cast<std::uint64_t>(registers[index]), 16, 16) << "\n";
    }
#elif defined(__aarch64__)
    const auto& machine = static_cast<const ucontext_t*>(context)->uc_mcontext;
    for (std::size_t index = 0; index < std::size(machine.regs); ++index) {
        text << "x";
        text.Number(index) << " ";
        text.Number(machine.regs[index], 16, 16) << "\n";
    }
    text << "sp ";
    text.Number(machine.sp, 16, 16) << "\npc ";
    text.Number(machine.pc, 16, 16) << "\n";
#else
    (void)context;
    text << "registers are not known here\n";
#endif
    text.WriteTo(file);
}

void WriteMemoryMap(int file)
{
    const int maps = ::open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
    std::array<char, 4096> block = {};
    while (maps >= 0) {
        const ssize_t read = ::read(maps, block.data(), block.size());
        if (read <= 0 || ::write(file, block.data(), static_cast<std::size_t>(read)) != read) {
            break;
        }
    }
    if (maps >= 0) {
        ::close(maps);
    }
}

// In the notes of one part of a module; false when it is not there.
bool TakeBuildId(ByteView notes)
{
    while (notes.Covers(0, 12)) {
        const std::size_t idAt = 12 + (std::size_t{notes.U32(0)} + 3) / 4 * 4;
        const std::size_t idBytes = notes.U32(4);
        if (notes.U32(8) == NT_GNU_BUILD_ID && notes.Matches(12, std::string_view("GNU\0", 4)) &&
            idBytes < prepared.buildId.size() / 2) {
            FixedText<64> digits;
            for (std::size_t at = 0; at < idBytes; ++at) {
                digits.Number(notes.U8(idAt + at), 16, 2);
            }
            CopyText(prepared.buildId, digits.Terminated());
            return true;
        }
        notes = notes.Sub(idAt + (idBytes + 3) / 4 * 4);
    }
    return false;
}

// The first module is the program itself.
int TakeBuildIdOfProgram(dl_phdr_info* module, std::size_t /*size*/, void* /*unused*/)
{
    for (int index = 0; index < module->dlpi_phnum; ++index) {
        const auto& part = module->dlpi_phdr[index];
        const std::uintptr_t start = module->dlpi_addr + part.p_vaddr;
        // NOLINTNEXTLINE(performance-no-int-to-ptr,cppcoreguidelines-pro-type-reinterpret-cast): the loader gives numbers
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(start);
        if (part.p_type == PT_NOTE && TakeBuildId(ByteView(bytes, part.p_memsz))) {
            break;
        }
    }
    return 1;
}

}  // namespace

void PrepareCrashDump(const std::filesystem::path& otherFolder)
{
    const std::string folder = otherFolder.string();
    if (!folder.empty() && folder.size() + 2 < prepared.otherFolder.size()) {
        CopyText(prepared.otherFolder, folder + "/");
    }
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    ::localtime_r(&now, &local);
    prepared.zoneSeconds = local.tm_gmtoff;
    ::dl_iterate_phdr(&TakeBuildIdOfProgram, nullptr);
    // The first call loads a library.
    std::array<void*, 1> frame = {};
    ::backtrace(frame.data(), 1);
}

void NoteUncaughtException(const char* what)
{
    CopyText(prepared.exceptionText, what);
}

void WriteCrashDump(int signalNumber, const siginfo_t& details, const void* context)
{
    const int file = OpenDump();
    if (file < 0) {
        return;
    }
    FixedText<1024> head;
    head << "signal ";
    head.Number(static_cast<std::uint64_t>(signalNumber)) << "\naddress ";
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): to be shown
    head.Number(reinterpret_cast<std::uintptr_t>(details.si_addr), 16, 16) << "\nthread ";
    head.Number(static_cast<std::uint64_t>(::syscall(SYS_gettid)));
    head << "\nbuild " << prepared.buildId.data();
    head << "\nexception " << prepared.exceptionText.data() << "\n";
    head.WriteTo(file);
    WriteRegisters(file, context);
    std::array<void*, MostFrames> frames = {};
    const int count = ::backtrace(frames.data(), MostFrames);
    ::backtrace_symbols_fd(frames.data(), count, file);
    WriteMemoryMap(file);
    ::close(file);
}
