#include "cli/Completion.h"

#include "cli/TextForms.h"
#include "cli/Words.h"
#include "session/Session.h"
#include "session/TargetParts.h"
#include "session/TypeFilter.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <ostream>

namespace {

const auto Every = [](const CLI::App*) { return true; };

class Completing
{
public:
    Completing(Session& session, std::string typed, std::ostream& out)
        : m_session(session), m_typed(std::move(typed)), m_out(out)
    {
    }

    void Commands(const CLI::App& app);
    void Options(const CLI::App& command);
    void ValueOf(const CLI::Option& option);
    void Next(const CLI::App& command, std::size_t place);

private:
    bool Positional(const CLI::App& command, std::size_t place);
    void Offer(const std::string& word, const std::string& meaning = {});
    void Targets();
    void PartsOfImage(std::size_t mark);
    void Types();
    void EarlierScans();

    Session& m_session;
    std::string m_typed;
    std::ostream& m_out;
};

void Completing::Offer(const std::string& word, const std::string& meaning)
{
    // What a shell would have to quote twice is left to the user.
    if (word.starts_with(m_typed) && Printable(word) == word) {
        m_out << word << (meaning.empty() ? "" : "\t") << Printable(meaning) << '\n';
    }
}

void Completing::Commands(const CLI::App& app)
{
    for (const CLI::App* const command : app.get_subcommands(Every)) {
        Offer(command->get_name(), command->get_description());
    }
    if (m_typed.starts_with('-')) {
        Options(app);
    }
}

void Completing::Options(const CLI::App& command)
{
    for (const CLI::Option* const option : command.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            Offer("--" + name, option->get_description());
        }
    }
}

void Completing::Types()
{
    const std::size_t comma = m_typed.rfind(',');
    const std::string before = comma == m_typed.npos ? "" : m_typed.substr(0, comma + 1);
    for (const std::string& word : TypeFilter::Words()) {
        Offer(before + word);
    }
}

void Completing::ValueOf(const CLI::Option& option)
{
    if (option.get_name() == "--types") {
        Types();
    } else if (option.get_name() == "--data-dir") {
        m_out << "FOLDERS\n";
    }
}

std::string MeaningOf(const TargetRow& row)
{
    std::string meaning = std::string(KindName(row.kind)) + " " + SizeText(row.totalBytes);
    for (const std::string& more : {row.fileSystem, row.label, row.disk.model, row.node.string()}) {
        meaning += more.empty() ? "" : ", " + more;
    }
    return meaning;
}

// IMAGE#N
void Completing::PartsOfImage(std::size_t mark)
{
    ScanTarget image;
    image.imagePath = m_typed.substr(0, mark);
    for (const TargetRow& row : PartsOf(image, PartFacts::Places).rows) {
        Offer(image.imagePath.string() + "#" + std::to_string(unsigned{row.number}),
              MeaningOf(row));
    }
}

void Completing::Targets()
{
    const std::size_t mark = m_typed.rfind('#');
    if (mark != m_typed.npos && mark != 0) {
        PartsOfImage(mark);
        return;
    }
    const TargetList list = m_session.ListTargets();
    std::vector<TargetRow> rows = list.rows;
    for (TargetRow& whole : WholeDiskRows(list)) {
        rows.push_back(std::move(whole));
    }
    for (const TargetRow& row : rows) {
        Offer("#" + std::to_string(unsigned{row.number}), MeaningOf(row));
        if (row.kind != TargetKind::Gap) {
            Offer(row.node.string(), MeaningOf(row));
        }
    }
    m_out << "FILES\n";
}

void Completing::EarlierScans()
{
    for (const EarlierScan& scan : m_session.History().List().scans) {
        Offer(scan.number, scan.imagePath.string());
    }
}

// False where no word has its place any more.
bool Completing::Positional(const CLI::App& command, std::size_t place)
{
    for (const CLI::Option* const option : command.get_options()) {
        if (!option->get_positional() || place-- != 0) {
            continue;
        }
        const std::string name = option->get_name(true);
        if (name == "TARGET") {
            Targets();
        } else if (name == "N") {
            EarlierScans();
        } else {
            m_out << (name == "FOLDER" ? "FOLDERS\n" : "FILES\n");
        }
        return true;
    }
    return false;
}

// Options are offered to who begins one, and where nothing else is left.
void Completing::Next(const CLI::App& command, std::size_t place)
{
    if (m_typed.starts_with('-') || !Positional(command, place)) {
        Options(command);
    }
}

bool TakesValue(const CLI::Option& option)
{
    return !option.get_positional() && option.get_items_expected_max() != 0;
}

const CLI::Option* OptionNamed(const CLI::App& command, const std::string& word)
{
    for (const CLI::Option* const option : command.get_options()) {
        if (!option->get_positional() && option->check_name(word)) {
            return option;
        }
    }
    return nullptr;
}

}  // namespace

void WriteCompletions(const CLI::App& app,
                      std::vector<std::string> words,
                      Session& session,
                      std::ostream& out)
{
    if (words.empty()) {
        words.emplace_back();
    }
    Completing completing(session, words.back(), out);
    words.pop_back();
    const auto commands = app.get_subcommands(Every);
    const auto command = words.empty() ? commands.end()
                                       : std::find_if(commands.begin(), commands.end(),
                                                      [&words](const CLI::App* one) {
                                                          return one->get_name() == words.front();
                                                      });
    if (command == commands.end()) {
        if (words.empty()) {
            completing.Commands(app);
        }
        return;
    }
    std::size_t place = 0;
    const CLI::Option* waiting = nullptr;  // for its value
    for (auto word = words.begin() + 1; word != words.end(); ++word) {
        if (waiting != nullptr) {
            waiting = nullptr;
        } else if (word->starts_with('-')) {
            const CLI::Option* const option = OptionNamed(**command, *word);
            waiting = option != nullptr && TakesValue(*option) ? option : nullptr;
        } else {
            ++place;
        }
    }
    if (waiting != nullptr) {
        completing.ValueOf(*waiting);
        return;
    }
    completing.Next(**command, place);
}
