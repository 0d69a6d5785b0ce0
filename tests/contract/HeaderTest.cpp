// The public header's comments, against the table of all functions: what hosts read is what the tests check.

#include "tests/contract/functions/ExportedFunction.h"

#include <tests/contract/ExportedNames.h>
#include <tests/contract/PublicHeader.h>

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <string>
#include <vector>

namespace {

struct Declaration {
    std::string name;
    std::string comment;
};

// The comment lines above each exported function.
std::vector<Declaration> Declarations()
{
    const std::string header = kPublicHeader;
    const std::regex name(R"((\w+)\()");
    std::vector<Declaration> declarations;
    std::string comment;
    for (std::size_t begin = 0; begin < header.size();) {
        const std::size_t end = header.find('\n', begin);
        const std::string line = header.substr(begin, end - begin);
        std::smatch match;
        if (line.starts_with("///")) {
            comment += line + '\n';
        } else if (line.starts_with("KESTROVANE_API") && std::regex_search(line, match, name)) {
            declarations.push_back({match[1], comment});
        }
        if (!line.starts_with("///")) {
            comment.clear();
        }
        begin = end + 1;
    }
    return declarations;
}

// The text of a heading, up to the next one.
std::string TextOf(const std::string& heading, const std::string& comment)
{
    const std::size_t begin = comment.find(heading);
    return begin == std::string::npos ? "" : comment.substr(begin, comment.find("\n/// @", begin) - begin);
}

std::map<std::string, Throws> TableOfThrows()
{
    std::map<std::string, Throws> table;
    for (const ExportedFunction& function : AllFunctions()) {
        const std::string name = function.name;
        table[name.substr(0, name.find(','))] = function.throws;
    }
    return table;
}

} // namespace

TEST(Header, DeclaresEveryFunctionWithAComment)
{
    EXPECT_EQ(kDeclaredFunctions, Declarations().size());
}

TEST(Header, DeclaresTheFunctionsInTheReadmesOrder)
{
    std::vector<std::string> names;
    for (const Declaration& declaration : Declarations()) {
        if (names.empty() || names.back() != declaration.name) { // overloads follow each other
            names.push_back(declaration.name);
        }
    }
    EXPECT_EQ(std::vector<std::string>(std::begin(kReadmeFunctions), std::end(kReadmeFunctions)), names);
}

TEST(Header, HasTheSameHeadingsInTheSameOrderForEveryFunction)
{
    for (const Declaration& declaration : Declarations()) {
        SCOPED_TRACE(declaration.name);
        std::size_t last = 0;
        for (const char* heading : {"/// @logs  ", "/// @sideeffects  ", "/// @raises  "}) {
            const std::size_t found = declaration.comment.find(heading);
            ASSERT_NE(std::string::npos, found) << heading;
            EXPECT_LT(last, found) << heading;
            last = found;
        }
    }
}

TEST(Header, NamesTheExceptionsThatTheTableOfFunctionsNames)
{
    const std::map<std::string, Throws> table = TableOfThrows();
    for (const Declaration& declaration : Declarations()) {
        SCOPED_TRACE(declaration.name);
        const std::string throws = TextOf("@raises", declaration.comment);
        const auto found = table.find(declaration.name);
        ASSERT_NE(table.end(), found);
        const Throws expected = found->second;
        const bool both = expected == Throws::kBadAllocOrAtlException;
        EXPECT_EQ(expected == Throws::kBadAlloc || both, throws.find("std::bad_alloc") != std::string::npos);
        EXPECT_EQ(expected == Throws::kAtlException || both, throws.find("CAtlException") != std::string::npos);
        EXPECT_EQ(expected == Throws::kNothing || expected == Throws::kNothingAtAll,
                  throws.find("  Nothing") != std::string::npos);
    }
}
