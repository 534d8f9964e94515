#include "VortProcess.h"

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace vort_test {

VortRun runVort(std::vector<std::string> const &arguments, std::string const &input) {
    QStringList list;
    for (std::string const &argument : arguments) {
        list << QString::fromStdString(argument);
    }
    QProcess process;
    process.start(QString::fromUtf8(VORT_TOOL_PATH), list);
    VortRun run;
    if (!process.waitForStarted(30000)) {
        run.err = "could not start " VORT_TOOL_PATH;
        return run;
    }
    process.write(input.data(), static_cast<qint64>(input.size()));
    process.closeWriteChannel();
    // Generous: a sanitizer build of the tool starts slowly, and only a hang comes near this.
    const bool ended = process.waitForFinished(60000);
    run.out = process.readAllStandardOutput().toStdString();
    run.err = process.readAllStandardError().toStdString();
    run.finished = ended && process.exitStatus() == QProcess::NormalExit;
    run.exitCode = run.finished ? process.exitCode() : -1;
    if (!ended) {
        process.kill();
        process.waitForFinished(5000);
    }
    return run;
}

void expectRuns(std::vector<VortCase> const &cases) {
    for (VortCase const &expected : cases) {
        std::string call = "vort";
        for (std::string const &argument : expected.arguments) {
            call += " " + argument;
        }
        SCOPED_TRACE(call);
        const VortRun run = runVort(expected.arguments, expected.input);
        ASSERT_TRUE(run.finished) << run.err;
        EXPECT_EQ(run.exitCode, expected.exitCode) << run.err;
        EXPECT_EQ(run.out, expected.out);
        if (!expected.err.empty() && expected.err.back() == '\n') {
            EXPECT_EQ(run.err, expected.err);
        } else {
            EXPECT_NE(run.err.find(expected.err), std::string::npos) << run.err;
        }
    }
}

struct ScratchFolder::Private {
    QTemporaryDir folder;
};

ScratchFolder::ScratchFolder() : d(new Private) {}

ScratchFolder::~ScratchFolder() {
    delete d;
}

std::string ScratchFolder::path(std::string const &name) const {
    return d->folder.filePath(QString::fromStdString(name)).toStdString();
}

void ScratchFolder::write(std::string const &name, std::string const &bytes) const {
    QFile file(QString::fromStdString(path(name)));
    if (file.open(QIODevice::WriteOnly)) {
        file.write(bytes.data(), static_cast<qint64>(bytes.size()));
    }
}

std::string ScratchFolder::read(std::string const &name) const {
    QFile file(QString::fromStdString(path(name)));
    if (!file.open(QIODevice::ReadOnly)) {
        return "<missing>";
    }
    return file.readAll().toStdString();
}

}  // namespace vort_test
