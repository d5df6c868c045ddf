// `talmo papers`: the user's library from the command line, and a printer's list as a
// property list.
#include "paperlib/paperlib.h"
#include "ipp-answers.h"
#include "testing/loopback-servers/loopback-servers.h"
#include "paperlib-fixture.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>

namespace talmo::test {
namespace {

struct CliRun {
    int exit = -1;
    std::string out, err;
};

class PapersCommand : public LibraryHome {
protected:
    // Runs `talmo` with the test's private home (the environment is inherited).
    CliRun talmo(const std::vector<std::string>& args)
    {
        std::string command = TALMO_CLI;
        for (const std::string& a : args)
            command += " '" + a + "'";
        const int st = std::system((command + " >" + root_ + "/out 2>" + root_ + "/err").c_str());
        return {WIFEXITED(st) ? WEXITSTATUS(st) : -1, readAll(root_ + "/out"), readAll(root_ + "/err")};
    }
};

TEST_F(PapersCommand, AddListRenameRemove)
{
    Stock coated;
    coated.setWeight(350); // beyond what any printer map offers
    writeRaw(root_ + "/heavy.plist", pl::writePlist(coated.asTicket()));

    const CliRun a = talmo({"papers", "add", "Bond"});
    ASSERT_EQ(a.exit, 0) << a.err;
    const std::string bond = a.out.substr(0, a.out.find('\n'));
    EXPECT_TRUE(Uuid::fromString(bond));
    const CliRun b = talmo({"papers", "add", "Heavy Card", root_ + "/heavy.plist"});
    ASSERT_EQ(b.exit, 0) << b.err;
    const std::string heavy = b.out.substr(0, b.out.find('\n'));

    const CliRun dup = talmo({"papers", "add", "BOND"});
    EXPECT_EQ(dup.exit, 1);
    EXPECT_EQ(dup.err, "talmo: papers add: a paper named \"BOND\" exists already\n");

    EXPECT_EQ(talmo({"papers", "list"}).out, bond + "\tok\tBond\n" + heavy + "\tunsupported-values\tHeavy Card\n");

    EXPECT_EQ(talmo({"papers", "rename", "heavy card", "Bond"}).exit, 1) << "the new name is taken";
    const CliRun renamed = talmo({"papers", "rename", "heavy card", "Card 350"});
    ASSERT_EQ(renamed.exit, 0) << renamed.err;
    ASSERT_EQ(talmo({"papers", "remove", bond}).exit, 0);
    EXPECT_EQ(talmo({"papers", "list"}).out, heavy + "\tunsupported-values\tCard 350\n");
    const CliRun missing = talmo({"papers", "remove", "Bond"});
    EXPECT_EQ(missing.exit, 1);
    EXPECT_EQ(missing.err, "talmo: papers remove: no paper named \"Bond\"\n");
    EXPECT_EQ(talmo({"papers", "add"}).exit, 2);

    // A stock file that is not a dictionary loses nothing.
    writeRaw(root_ + "/bad.plist", "<plist><array/></plist>");
    EXPECT_EQ(talmo({"papers", "add", "X", root_ + "/bad.plist"}).exit, 1);
    EXPECT_EQ(talmo({"papers", "list"}).out, heavy + "\tunsupported-values\tCard 350\n");
}

TEST_F(PapersCommand, FetchWritesThePrinterListInItsOrder)
{
    ScriptedServer printer(Answer(HttpResponse("200 OK", PrinterAnswer(3))));
    const CliRun r = talmo({"papers", "fetch", printer.address()});
    ASSERT_EQ(r.exit, 0) << r.err;
    const pl::ArrayPtr list = pl::as<pl::Array>(pl::readPlist(r.out));
    ASSERT_TRUE(list);
    ASSERT_EQ(list->size(), 3u);
    EXPECT_EQ(Stock(pl::as<pl::Dictionary>(list->at(2))).customName(), std::string("Paper 2"))
        << "in the printer's order";
    ASSERT_EQ(talmo({"papers", "fetch", printer.address(), "-o", root_ + "/list.plist"}).exit, 0);
    EXPECT_EQ(readAll(root_ + "/list.plist"), r.out);

    const std::string closed = "127.0.0.1:" + std::to_string(FreeLoopbackPort());
    const CliRun refused = talmo({"papers", "fetch", closed, "-o", root_ + "/none.plist"});
    EXPECT_EQ(refused.exit, 1);
    EXPECT_EQ(refused.err, "Unable to connect to server: Connection refused\ntalmo: papers fetch: cannot reach the "
                           "printer at " +
                               closed + "\n");
    EXPECT_FALSE(std::filesystem::exists(root_ + "/none.plist"));
}

} // namespace
} // namespace talmo::test
