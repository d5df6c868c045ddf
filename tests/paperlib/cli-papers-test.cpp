// `talmo papers`: the user's library from the command line, and a printer's list as a
// property list.
#include "ipp-answers.h"
#include "paperlib-fixture.h"
#include "testing/loopback-servers/loopback-servers.h"

#include <sys/wait.h>

namespace talmo::test {
namespace {

struct PapersCommand : LibraryHome {
    // Exit status, stdout and stderr of `talmo ARGS` run with the test's private home.
    std::tuple<int, std::string, std::string> talmo(const std::vector<std::string>& args)
    {
        std::string command = TALMO_CLI;
        for (const std::string& a : args)
            command += " '" + a + "'";
        const int st = std::system((command + " >" + root_ + "/out 2>" + root_ + "/err").c_str());
        return {WIFEXITED(st) ? WEXITSTATUS(st) : -1, readAll(root_ + "/out"), readAll(root_ + "/err")};
    }
    std::string out(const std::vector<std::string>& args) { return std::get<1>(talmo(args)); }
};

TEST_F(PapersCommand, AddListRenameRemove)
{
    writeRaw(root_ + "/heavy.plist", pl::writePlist(NamedPaper("", 350).asTicket()));
    writeRaw(root_ + "/bad.plist", "<plist><array/></plist>");
    const std::string bond = out({"papers", "add", "Bond"}).substr(0, 36);
    const std::string heavy = out({"papers", "add", "Heavy Card", root_ + "/heavy.plist"}).substr(0, 36);
    EXPECT_TRUE(Uuid::fromString(bond) && Uuid::fromString(heavy));
    const std::tuple<std::vector<std::string>, int, std::string> cases[] = {
        {{"papers", "add", "BOND"}, 1, "talmo: papers add: a paper named \"BOND\" exists already\n"},
        {{"papers", "rename", "heavy card", "Bond"}, 1, ""},
        {{"papers", "rename", "heavy card", "Card 350"}, 0, ""},
        {{"papers", "remove", bond}, 0, ""},
        {{"papers", "remove", "Bond"}, 1, "talmo: papers remove: no paper named \"Bond\"\n"},
        {{"papers", "add", "X", root_ + "/bad.plist"}, 1, ""},
        {{"papers", "add"}, 2, ""}};
    for (const auto& [args, status, err] : cases) {
        const auto [exit, o, e] = talmo(args);
        EXPECT_EQ(exit, status) << args[1] << " " << args.back();
        if (!err.empty())
            EXPECT_EQ(e, err);
    }
    EXPECT_EQ(out({"papers", "list"}), heavy + "\tunsupported-values\tCard 350\n");
}

TEST_F(PapersCommand, FetchWritesThePrinterListInItsOrder)
{
    ScriptedServer printer(Answer(HttpResponse("200 OK", PrinterAnswer(3))));
    const auto [exit, doc, err] = talmo({"papers", "fetch", printer.address()});
    ASSERT_EQ(exit, 0) << err;
    const pl::ArrayPtr list = pl::as<pl::Array>(pl::readPlist(doc));
    ASSERT_TRUE(list && list->size() == 3u);
    EXPECT_EQ(Stock(pl::as<pl::Dictionary>(list->at(2))).customName(), std::string("Paper 2"));
    ASSERT_EQ(std::get<0>(talmo({"papers", "fetch", printer.address(), "-o", root_ + "/list.plist"})), 0);
    EXPECT_EQ(readAll(root_ + "/list.plist"), doc);

    const std::string closed = "127.0.0.1:" + std::to_string(FreeLoopbackPort());
    EXPECT_EQ(talmo({"papers", "fetch", closed, "-o", root_ + "/none.plist"}),
              std::tuple(1, std::string(),
                         "Unable to connect to server: Connection refused\ntalmo: papers fetch: cannot reach the "
                         "printer at " +
                             closed + "\n"));
    EXPECT_FALSE(std::filesystem::exists(root_ + "/none.plist"));
}

} // namespace
} // namespace talmo::test
