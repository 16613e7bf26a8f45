// Runs the command line inside the test.
#pragma once

#include "cli/CommandLine.h"
#include "session/Session.h"
#include "tests/support/Bytes.h"
#include "tests/support/FatCard.h"
#include "tests/support/Pictures.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <json/json.h>

#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

struct Outcome
{
    int status = -1;
    std::string out;
    std::string err;
};

// The command line with nothing to scan.
class CliFixture : public testing::Test
{
protected:
    // answers is what a person types.
    Outcome RunAsGiven(std::vector<std::string> arguments,
                       bool terminal = false,
                       std::istream* answers = nullptr) const
    {
        arguments.insert(arguments.end(), {"--data-dir", (m_folder / "data").string()});
        std::ostringstream out;
        std::ostringstream err;
        CommandStreams streams{out, err, terminal, answers};
        const std::unique_ptr<Session> session = m_engines != nullptr
                                                     ? std::make_unique<Session>(m_engines)
                                                     : std::make_unique<Session>();
        const ExitStatus status = RunCommandLine(std::move(arguments), streams, *session);
        return {static_cast<int>(status), out.str(), err.str()};
    }

    static Json::Value Parse(const std::string& text)
    {
        Json::Value value;
        std::string problem;
        const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
        EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &value, &problem))
            << problem << text;
        return value;
    }

    // Every file below a folder by its relative path.
    static std::map<std::string, ByteVector> FilesBelow(const std::filesystem::path& top)
    {
        std::map<std::string, ByteVector> files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(top)) {
            if (entry.is_regular_file()) {
                files[entry.path().lexically_relative(top).string()] = ReadFileBytes(entry.path());
            }
        }
        return files;
    }

    DataFolder m_data;
    TempFolder m_folder;
    std::shared_ptr<IEngineMaker> m_engines;  // null: those of the program
};

// With a FAT32 volume on which pictures were deleted.
class CardFixture : public CliFixture
{
protected:
    void SetUp() override
    {
        if (const std::string missing = FatCard::MissingTools(); !missing.empty()) {
            GTEST_SKIP() << missing;
        }
        m_card.emplace(m_folder / "card.img", FatOptions());
        m_card->MakeFolder("Lake");
        m_card->MakeFolder("Old");
        // Living files stay between the deleted ones and must not come back.
        Add("living.png", MakePng(40, 30, 1));
        Add("first picture.jpg", MakeJpeg(800, 600, 2));
        Add("Lake/second picture.png", MakePng(90, 70, 3));
        Add("Lake/first picture.jpg", MakeJpeg(640, 480, 4));
        Add("Old/third picture.bmp", MakeBmp(64, 50, 5));
        Add("some notes.txt", Bytes("'some text'"));
        Add("no extension", RandomBytes(3000, 6));
        Add("some data.xyz", RandomBytes(3000, 7));
        for (const char* name :
             {"first picture.jpg", "Lake/second picture.png", "Lake/first picture.jpg",
              "some notes.txt", "no extension", "some data.xyz"}) {
            m_card->Delete(name);
        }
        m_card->DeleteTree("Old");
    }

    void Add(const std::string& path, const ByteVector& bytes)
    {
        m_card->Put(path, bytes);
        m_originals[path] = bytes;
    }

    std::string Card() const { return m_card->ImagePath().string(); }

    // The quick scan, where the deep one is the default: what it finds on the card is known to the file.
    Outcome RunFast(std::vector<std::string> arguments) const
    {
        arguments.emplace_back("--fast");
        return RunAsGiven(std::move(arguments));
    }

    std::optional<FatCard> m_card;
    std::map<std::string, ByteVector> m_originals;
};
