// map: where a file would go.

#include "agent/commands/Commands.h"

#include "agent/console/CommandOptions.h"
#include "agent/console/Output.h"
#include "agent/console/Report.h"
#include "agent/platform/Paths.h"
#include "agent/restore/Mappings.h"

#include <Kestrovane.h>

#include <memory>

namespace agent {

namespace {

struct MapOptions {
    std::wstring path;
    std::wstring name; // empty: `path` is a file, or else a directory
    Mappings mappings;
    bool explain = false;
};

// The query as the library takes it: a directory and a file specification.
struct Query {
    std::wstring directory;
    std::wstring spec;
};

std::wstring Quoted(const std::wstring& string)
{
    return L"\"" + string + L"\"";
}

std::wstring Describe(const VSS_ALTERNATE_MAPPING& mapping)
{
    return mapping.path + L" -> " + mapping.alternateLocation + L", files " + mapping.fileSpec +
           (mapping.recursive ? L", with all below" : L", that directory alone");
}

bool CoversName(VSS_ALTERNATE_MAPPING mapping, Query query)
{
    return IsFileDescMatch(mapping.path, mapping.fileSpec, false, mapping.path, query.spec, false);
}

bool Covers(VSS_ALTERNATE_MAPPING mapping, Query query)
{
    return IsFileDescMatch(mapping.path, mapping.fileSpec, mapping.recursive, query.directory, query.spec, false);
}

std::wstring WhyItCovers(const VSS_ALTERNATE_MAPPING& mapping, const Query& query)
{
    if (!CoversName(mapping, query)) {
        return L"does not cover it: the name does not fit " + Quoted(mapping.fileSpec);
    }
    if (Covers(mapping, query)) {
        return mapping.recursive ? L"covers it: the directory is the mapped one or lies below it"
                                 : L"covers it: the directory is the mapped one";
    }
    VSS_ALTERNATE_MAPPING recursive = mapping;
    recursive.recursive = true;
    return Covers(recursive, query) ? L"does not cover it: the directory lies below, and the mapping is not recursive"
                                    : L"does not cover it: the directory is not in the mapped one";
}

class Explanation {
public:
    Explanation(const MapOptions& options, const Query& query, Report& report)
        : m_options(options), m_query(query), m_report(report)
    {
    }

    void Write()
    {
        for (std::size_t i = 0; i < m_options.mappings.size(); ++i) {
            ExplainMapping(i + 1, m_options.mappings[i]);
        }
        ExplainChoice();
    }

private:
    void ExplainMapping(std::size_t number, const VSS_ALTERNATE_MAPPING& mapping)
    {
        Say(L"mapping " + std::to_wstring(number) + L": " + Describe(mapping) + L": " + WhyItCovers(mapping, m_query));
        if (IsSameOrBelow(mapping.alternateLocation, mapping.path)) {
            Say(L"warning: mapping " + std::to_wstring(number) + L" stays inside its own source");
        }
    }

    void ExplainChoice()
    {
        const std::wstring plain = ResultOf(&MapRestorePath);
        const std::wstring trimmed = ResultOf(&MapRestorePath1);
        Say(L"MapRestorePath: " + plain);
        Say(L"MapRestorePath1: " + trimmed);
        if (plain != trimmed) {
            Say(L"warning: the mapping's path ends with a backslash, which makes the two functions differ");
        }
    }

    std::wstring ResultOf(bool (*function)(std::wstring&, std::wstring&, Mappings&)) const
    {
        Query query = m_query;
        Mappings mappings = m_options.mappings;
        return function(query.directory, query.spec, mappings) ? query.directory : L"not covered";
    }

    void Say(const std::wstring& line)
    {
        m_report.Add("explanation", line);
        if (!IsJson()) {
            WriteResult(line + L"\n");
        }
    }

    const MapOptions& m_options;
    const Query& m_query;
    Report& m_report;
};

// A path without a name is taken for a file, and where no mapping covers that, for a directory with all its files.
Query ReadQuery(const MapOptions& options)
{
    if (!options.name.empty()) {
        return {options.path, options.name};
    }
    Query file{GetPathFileName(options.path), GetFileName(options.path)};
    Mappings mappings = options.mappings;
    if (!file.spec.empty() && FindPlace(file.directory, file.spec, mappings).mapped) {
        return file;
    }
    Query directory{options.path, L"*"};
    return FindPlace(directory.directory, directory.spec, mappings).mapped || file.spec.empty() ? directory : file;
}

int RunMap(const MapOptions& options)
{
    Report report("map");
    if (const auto reason = WhyMappingsAreIncomplete(options.mappings)) {
        report.Fail(L"the command line", *reason);
        return report.FinishObject(kWrongUsage);
    }
    const Query query = ReadQuery(options);
    Mappings mappings = options.mappings;
    const Place place = FindPlace(query.directory, query.spec, mappings);
    const std::wstring target = query.spec == L"*" ? place.directory : Join(place.directory, query.spec);
    if (options.explain) {
        Explanation(options, query, report).Write();
    }
    if (IsJson()) {
        report.Set("directory", query.directory);
        report.Set("spec", query.spec);
        report.Set("target", target);
        report.SetFlag("mapped", place.mapped);
        return report.Finish();
    }
    WriteResult(target + L"\n");
    if (!place.mapped) {
        WriteMessage(L"no mapping covers it; it stays where it is");
    }
    return kAllDone;
}

} // namespace

void AddMapCommand(CommandSet& commands)
{
    auto options = std::make_shared<MapOptions>();
    CommandOptions command =
        commands.Add("map", "Shows where a file would be restored", [options] { return RunMap(*options); });
    command.Required("PATH", options->path, "The file, or its directory when NAME is given");
    command.Optional("NAME", options->name, "The file's name or pattern");
    AddMappings(command, options->mappings);
    command.Flag("--explain", options->explain, "Which mappings cover it, and why");
    command.Example(R"(kestrovane-agent map C:\Data\Sub\a.txt --map C:\Data=D:\New;*;recursive)");
}

} // namespace agent
