#include <filesystem>

#include "tests/ztclient/Command.h"
#include "ztclient/session/UploadServer.h"

namespace {

TEST(Session, GoesThroughEveryStepOnEitherService) {
  const testsupport::Shell shell;
  for (const std::string& options : {std::string(), " --wsdl '" + testsupport::serviceFile() + "'"}) {
    const auto outcome = shell.run("ztclient session" + options);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    for (const char* line :
         {"\n1. ", "checksum", "\n2. ", "/dravolin/locator\n", "\n3. ", "  operation", "\n4. ",
          "byte for byte\n", "\n5. ", "/perlbin/runjob.pl?_protocol=", "\n6. ", "equal to the file\n",
          "\n7. ", "user=ann&jobid=4711", "\n8. ", "acceptable tolerance"})
      EXPECT_NE(outcome.out.find(line), std::string::npos) << line << '\n' << outcome.out;
  }
}

TEST(Session, UploadsToTheServerThatIsNamed) {
  const testsupport::Shell shell;
  UploadServer server;
  const auto outcome = shell.run("ztclient session --server " + server.url() + "/");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  const auto received = server.received();
  ASSERT_TRUE(received);
  EXPECT_EQ(received->fileName, "compounds.txt");
  EXPECT_EQ(received->job, "4711");
  EXPECT_EQ(shell.run("ztclient session --server http://127.0.0.1:1").status, 2);
}

TEST(Upload, ArrivesWholeUnderItsNameAndRefusalsTellWhy) {
  const testsupport::Shell shell;
  UploadServer server;
  const std::string bytes(300000, 'x');
  shell.folder().write("files/big file", bytes);
  const std::string url = server.url() + "/perlbin/upload.pl";
  for (const std::string option : {"", " --expect-continue"}) {
    const auto outcome =
        shell.run("ztclient upload 'big file' --session s1 --name 'n ü' --url " + url + option);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const auto received = server.received();
    ASSERT_TRUE(received);
    EXPECT_EQ(received->fileName, "n ü");
    EXPECT_EQ(received->session, "s1");
    EXPECT_FALSE(received->job);
    EXPECT_EQ(received->file, bytes);
    EXPECT_LT(received->encodedSize, bytes.size() / 10);
  }
  // Nothing that is read from a pipe tells the server where it lies meanwhile.
  shell.check({{"ZTCLIENT_SESSION=s2 ztclient upload - --name n --url " + url + " <'big file'", 0, "", ""}});
  const auto piped = server.received();
  ASSERT_TRUE(piped);
  EXPECT_EQ(piped->session, "s2");
  EXPECT_EQ(piped->path, "n");
  EXPECT_EQ(piped->file, bytes);
  const auto refused = shell.run("ztclient upload 'big file' --session s1 --url " + server.url() + "/other");
  EXPECT_EQ(refused.status, 2);
  EXPECT_EQ(refused.err, "ztclient upload: Unable to upload big file: Only uploads are taken here\n");
}

TEST(Session, GoesPastProxiesToItsOwnServerAndLeavesNothing) {
  const testsupport::Shell shell;
  shell.check({{"export TMPDIR=$PWD/t http_proxy=http://127.0.0.1:1 ALL_PROXY=http://127.0.0.1:1; mkdir t; "
                "ztclient session | grep -c '^[1-8]. '; ls -A t",
                0, "8\n", ""},
               {"export TMPDIR=$PWD/t; for signal in INT TERM KILL; do " ZTB_COMMAND
                " log - < <(sleep 5) & sleep .2; kill -$signal $!; wait $!; done 2>/dev/null; ls -A t; "
                "(" ZTB_COMMAND " session & kill -TERM $!; wait $!) >/dev/null 2>&1; ls -A t",
                0, "", ""}});
}

TEST(Upload, ByTheExampleArrivesWhole) {
  const testsupport::Shell shell;
  if (!std::filesystem::exists(ZTB_EXAMPLE_UPLOAD)) GTEST_SKIP() << "the examples are not built";
  UploadServer server;
  shell.folder().write("files/a.txt", "content");
  EXPECT_EQ(shell.run(ZTB_EXAMPLE_UPLOAD " a.txt " + server.url() + "/upload.pl s1").status, 0);
  const auto received = server.received();
  ASSERT_TRUE(received);
  EXPECT_EQ(received->file, "content");
}

}  // namespace
