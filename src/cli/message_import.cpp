// quillcast message import: the body of a message file as a document to go on writing.
#include <fmt/format.h>

#include <cerrno>

#include "cli/message_commands.h"
#include "cli/send_steps.h"
#include "document/declared_charset.h"
#include "document/document_pictures.h"
#include "mail_file/import_body.h"
#include "mail_file/load_settings.h"
#include "mail_file/working_folder.h"
#include "platform/file.h"
#include "platform/file_attributes.h"
#include "platform/text.h"

namespace quillcast::cli {
namespace {

struct MessageImportOptions {
  MessageFiles files;
  std::string document;
};

// The pictures go beside the document, as when it is saved in the window.
Result<void> WriteDocument(const mail_file::ImportedBody& body, const std::filesystem::path& target,
                           const profile::Folders& folders) {
  // Before the pictures make the folder.
  if (!std::filesystem::is_directory(std::filesystem::absolute(target, IgnoreErrors()).parent_path(), IgnoreErrors()))
    return platform::SystemError("create", target, ENOENT);
  document::PicturePlaces places;
  document::TakenPictures taken;
  const auto html = document::TakePicturesAlong(body.html, body.folder, body.folder, places.WithOwnFolder(body.folder),
                                                target, taken);
  if (!html) return html.error();
  return platform::ReplaceChosenFile(target, folders.OwnFiles(),
                                     document::WithCharset(*html, document::BodyEncoding::kUtf8));
}

int ImportOne(Context& context, const std::string& name, const mail_file::MailMessage& message,
              const std::filesystem::path& target) {
  const profile::Folders folders = context.Folders();
  const auto working = mail_file::WorkingFolder::Make(folders.temporary, context.clock);
  if (!working) return context.output.Fail(working.error());
  const auto body = mail_file::ImportBody(message, working->path(), folders.temporary, context.clock, &context.cancel);
  if (!body) return context.output.Fail(body.error());
  for (const Error& failure : body->failures) context.output.Note(InOneLine(failure));
  if (const auto written = WriteDocument(*body, target, folders); !written) return context.output.Fail(written.error());
  context.output.Line(fmt::format("The body of {} is in {}.", platform::Printable(name, 4096),
                                  platform::Printable(target.string(), 4096)));
  if (!body->subject.empty()) context.output.Line("Subject: " + platform::Printable(body->subject, 1000));
  context.output.Object({{"file", name}, {"document", target.string()}, {"subject", body->subject}});
  return 0;
}

int RunMessageImport(Context& context, const MessageImportOptions& options) {
  if (options.files.names.size() > 1)
    return context.output.Complain("One message becomes one document: name one file.");
  if (platform::EqualsIgnoringAsciiCase(std::filesystem::path(options.document).extension().string(), ".txt"))
    return context.output.Complain(
        "The document is HTML, and would be read as text: give it a name that ends in .htm.");
  if (const auto named = CheckNamesAFile(options.document); !named) return context.output.Fail(named.error());
  if (const auto other = mail_file::CheckIsNotMessage(options.document, options.files.names.front()); !other)
    return context.output.Fail(other.error());
  if (const int refused = AskToWrite(context, options.document)) return refused;
  return WithMessages(context, options.files, [&](const LoadedFile& file) {
    return ImportOne(context, file.name, *file.loading.message, options.document);
  });
}

}  // namespace

void AddMessageImport(CLI::App& message, Context& context) {
  CLI::App& command = *message.add_subcommand("import", "Make the body of a message file a document to go on writing");
  const auto options = std::make_shared<MessageImportOptions>();
  AddMessageFiles(command, options->files);
  command.add_option("-o,--output", options->document, "The document (HTML); what is there is replaced")
      ->required()
      ->type_name("DOCUMENT");
  command.footer(
      "Scripts, forms and references to elsewhere are left out; embedded pictures go into a folder beside the "
      "document.\n"
      "Example:\n  quillcast message import letter.eml -o letter.htm");
  OnRun(command, context, [options](Context& ctx) { return RunMessageImport(ctx, *options); });
}

}  // namespace quillcast::cli
