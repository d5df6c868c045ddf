// talmo-print end to end: the job goes to a real IPP printer (ippeveprinter on loopback, keeping
// what it receives), which must hold the ticket's attributes and, when asked for, the TPIF
// ticket inside the PDF, byte for byte what `talmo tpif export` writes.
#include "host/print-job.h"

#include <gtest/gtest.h>

#include <QImage>

#include <cups/cups.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <tuple>
#include <sstream>

using namespace talmo;
using namespace talmo::host;
namespace fs = std::filesystem;

namespace {

const std::string kSource = TALMO_SOURCE_DIR;
const std::string kSample = kSource + "/examples/sample.pdf";
const std::string kJob = kSource + "/tests/host/data/job.plist";

std::string slurp(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

std::string shellQuote(const std::string& s)
{
    std::string out = "'";
    for (char c : s)
        out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

struct Outcome {
    int status;
    std::string out, err;
};

// A private home and the offscreen platform, so no run touches a real user's files or display.
class HostRuns : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string templ = fs::temp_directory_path().string() + "/talmo-host-XXXXXX";
        ASSERT_NE(::mkdtemp(templ.data()), nullptr);
        dir_ = templ;
    }
    void TearDown() override
    {
        std::error_code ec;
        fs::remove_all(dir_, ec);
    }

    Outcome run(const std::string& program, const std::vector<std::string>& args)
    {
        std::string cmd = "env QT_QPA_PLATFORM=offscreen HOME=" + dir_ + " XDG_CONFIG_HOME=" + dir_ +
                          "/config XDG_DATA_HOME=" + dir_ + "/data " + shellQuote(program);
        for (const auto& a : args)
            cmd += " " + shellQuote(a);
        cmd += " >" + dir_ + "/out 2>" + dir_ + "/err";
        const int st = std::system(cmd.c_str());
        return {WIFEXITED(st) ? WEXITSTATUS(st) : -1, slurp(dir_ + "/out"), slurp(dir_ + "/err")};
    }

    // The job ticket with some items replaced.
    std::string ticketWith(const std::string& name, const std::vector<std::pair<std::string, pl::ValuePtr>>& items)
    {
        auto d = pl::as<pl::Dictionary>(pl::readPlistFile(kJob));
        for (const auto& [k, v] : items)
            d->set(k, v);
        const std::string path = dir_ + "/" + name;
        std::ofstream(path) << pl::writePlist(d);
        return path;
    }

    std::string dir_;
};

class PrintEndToEnd : public HostRuns {
protected:
    static void SetUpTestSuite()
    {
        // Test programs share the daemons the first printer may start: one at a time.
        lock_ = ::open("/tmp/talmo-ippeveprinter.lock", O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (lock_ >= 0)
            ::flock(lock_, LOCK_EX);
        printer_ = new LoopbackIppPrinter;
        why_ = printer_->start(kSource + "/resources/ppd/talmo-studio-press.conf",
                               "Talmo End To End " + std::to_string(::getpid()), true);
    }
    static void TearDownTestSuite()
    {
        delete printer_;
        if (lock_ >= 0)
            ::close(lock_);
    }
    void SetUp() override
    {
        HostRuns::SetUp();
        ASSERT_EQ(why_, "") << "the test printer cannot run";
    }

    // Prints and answers the job's id and the file the printer kept.
    std::pair<int, std::string> print(const std::string& ticket)
    {
        Outcome r = run(TALMO_PRINT, {"--print", "--printer", printer_->uri(), "--ticket", ticket, kSample});
        EXPECT_EQ(r.status, 0) << r.err;
        std::smatch m;
        if (!std::regex_search(r.out, m, std::regex("^Job ([0-9]+) accepted by ")))
            return {0, ""};
        const int id = std::stoi(m[1]);
        for (const auto& e : fs::directory_iterator(printer_->spoolFolder()))
            if (e.path().filename().string().rfind(std::to_string(id) + "-", 0) == 0 && e.path().extension() == ".pdf")
                return {id, e.path().string()};
        return {id, ""};
    }

    std::map<std::string, std::string> jobAttributes(int id)
    {
        std::unique_ptr<http_t, decltype(&httpClose)> http(
            httpConnect2("localhost", printer_->port(), nullptr, AF_UNSPEC, HTTP_ENCRYPTION_NEVER, 1, 5000, nullptr),
            &httpClose);
        ipp_t* request = ippNewRequest(IPP_OP_GET_JOB_ATTRIBUTES);
        ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr, printer_->uri().c_str());
        ippAddInteger(request, IPP_TAG_OPERATION, IPP_TAG_INTEGER, "job-id", id);
        std::unique_ptr<ipp_t, decltype(&ippDelete)> answer(cupsDoRequest(http.get(), request, "/ipp/print"),
                                                            &ippDelete);
        std::map<std::string, std::string> out;
        for (ipp_attribute_t* a = answer ? ippFirstAttribute(answer.get()) : nullptr; a;
             a = ippNextAttribute(answer.get())) {
            char text[2048];
            ippAttributeString(a, text, sizeof text);
            if (ippGetName(a))
                out[ippGetName(a)] = text;
        }
        return out;
    }

    std::string attachment(const std::string& pdf)
    {
        const std::string out = dir_ + "/attached.tpif";
        fs::remove(out);
        std::string cmd = "pdfdetach -save 1 -o " + shellQuote(out) + " " + shellQuote(pdf) + " 2>/dev/null";
        return std::system(cmd.c_str()) == 0 ? slurp(out) : "<none>";
    }

    static LoopbackIppPrinter* printer_;
    static std::string why_;
    static int lock_;
};

LoopbackIppPrinter* PrintEndToEnd::printer_ = nullptr;
std::string PrintEndToEnd::why_;
int PrintEndToEnd::lock_ = -1;

TEST_F(PrintEndToEnd, TheJobArrivesAsTheTicketSays)
{
    auto [id, kept] = print(kJob);
    ASSERT_GT(id, 0);
    auto attrs = jobAttributes(id);
    const std::pair<const char*, const char*> expected[] = {
        {"job-name", "Quarterly, report"},
        {"job-originating-user-name", "dana"},
        {"copies", "3"},
        {"page-ranges", "1-2"},
        {"sides", "two-sided-long-edge"},
        {"print-color-mode", "monochrome"},
        {"output-bin", "stacker"},
        {"finishings", "staple-dual-left,punch-dual-left"},
        {"media-col", "{media-color=blue media-size={x-dimension=21000 y-dimension=29700} media-type=stationery "
                      "media-weight-metric=160}"},
        {"job-message-to-operator", "Use the \\\"blue\\\" cover, please"},
        {"document-format-supplied", "application/pdf"},
    };
    for (const auto& [name, value] : expected)
        EXPECT_EQ(attrs[name], value) << name;
}

TEST_F(PrintEndToEnd, TheTpifTicketTravelsInsideThePdfOnlyWhenAskedFor)
{
    struct Row {
        std::string ticket;
        bool attached;
    } rows[] = {
        {kJob, true},
        {ticketWith("off.plist", {{"com.talmo.print.EmitTPIF", pl::makeInt(0)}}), false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.ticket);
        auto [id, kept] = print(row.ticket);
        ASSERT_FALSE(kept.empty()) << "the printer kept no document of job " << id;
        if (!row.attached) {
            EXPECT_EQ(attachment(kept), "<none>");
            continue;
        }
        // The same dialog run saved instead of printed, exported by the command line.
        const std::string saved = dir_ + "/saved.plist", tpif = dir_ + "/expected.tpif";
        ASSERT_EQ(
            run(TALMO_PRINT, {"--save-ticket", saved, "--printer", printer_->uri(), "--ticket", row.ticket, kSample})
                .status,
            0);
        ASSERT_EQ(run(TALMO_CLI, {"tpif", "export", saved, "-o", tpif}).status, 0);
        const std::string want = slurp(tpif);
        EXPECT_NE(want.find("<job-name syntax=\"name\" xml:space=\"preserve\">Quarterly, report</job-name>"),
                  std::string::npos);
        EXPECT_EQ(attachment(kept), want);
    }
}

TEST_F(PrintEndToEnd, ARefusedJobEndsWithThePrintersWords)
{
    auto tooLarge = pl::makeDict();
    tooLarge->setInt("Size", 75);
    tooLarge->setInt("Width", 90000);
    tooLarge->setInt("Length", 90000);
    const std::string closed = "ipp://localhost:1/ipp/print";
    struct Row {
        std::string ticket, printer, message;
    } rows[] = {
        {ticketWith("huge.plist", {{"com.talmo.print.JobLevelStock", tooLarge}}), printer_->uri(),
         "talmo-print: the printer refused the job: Unsupported media-col"},
        {kJob, closed, "talmo-print: cannot reach " + closed},
    };
    for (const Row& row : rows) {
        Outcome r = run(TALMO_PRINT, {"--print", "--printer", row.printer, "--ticket", row.ticket, kSample});
        EXPECT_NE(r.status, 0);
        EXPECT_NE(r.err.find(row.message), std::string::npos) << r.err;
        EXPECT_EQ(r.out, "");
    }
}

TEST_F(HostRuns, EveryPanelScreenshotShowsTheDialog)
{
    std::set<QByteArray> pictures; // each panel shows its own title, so no two pictures are alike
    for (int panel = 1; panel <= 6; ++panel) {
        const std::string png = dir_ + "/panel-" + std::to_string(panel) + ".png";
        Outcome r = run(TALMO_PRINT, {"--panel", std::to_string(panel), "--screenshot", png});
        ASSERT_EQ(r.status, 0) << r.err;
        QImage image(QString::fromStdString(png));
        ASSERT_FALSE(image.isNull()) << png;
        EXPECT_GE(image.width(), 300);
        EXPECT_GE(image.height(), 300);
        std::set<QRgb> colours;
        for (int y = 0; y < image.height(); y += 3)
            for (int x = 0; x < image.width(); x += 3)
                colours.insert(image.pixel(x, y));
        EXPECT_GT(colours.size(), 16u) << png << " looks blank";
        pictures.insert(QByteArray(reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes()));
    }
    EXPECT_EQ(pictures.size(), 6u) << "the chooser did not switch panels";
}

// A command's modal dialog is saved (not the taller print dialog) and closed, so the run ends.
TEST_F(HostRuns, ACommandSavesTheModalDialogItOpens)
{
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"6", "Abou", ""}, {"5", "TWmN", ""}, {"5", "TWmE", "no control in view"}, {"1", "help", "opened no dialog"}};
    for (const auto& [panel, command, error] : rows) {
        const std::string png = dir_ + "/" + command + ".png";
        Outcome r = run(TALMO_PRINT, {"--panel", panel, "--command", command, "--screenshot", png});
        EXPECT_NE(r.err.find(error), std::string::npos) << command << ": " << r.err;
        const QImage image(QString::fromStdString(png));
        EXPECT_EQ(r.status == 0 && !image.isNull() && image.height() < 500, !*error) << command;
    }
}

} // namespace
