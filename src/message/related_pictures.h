// The local pictures of an HTML body, taken along under Content-IDs, and those that nobody has allowed to be.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "document/message_document.h"
#include "message/file_source.h"
#include "message/message_options.h"
#include "platform/cancel.h"
#include "platform/result.h"
#include "platform/sentence.h"

namespace quillcast::message {

// Sentences for the person; with what comes of a trouble behind it.
Sentence Describe(const PictureTrouble& trouble);
Sentence GoesWithout(const PictureTrouble& trouble);
Sentence Describe(const Picture& picture);
Sentence Describe(const ForeignPicture& picture);

struct RelatedPictures {
  std::string html;                      // with "cid:" references, and no folder of this machine in the others
  std::vector<Picture> pictures;         // each file once
  std::vector<PictureTrouble> troubles;  // each file once, in the order of the HTML
  std::vector<ForeignPicture> foreign;   // also
};

// References of a document without a folder start from the root. A request by `cancel` ends it with what it has by
// then.
RelatedPictures TakePictures(const document::MessageDocument& document, std::string_view content_id_suffix,
                             const FileSource& files, const platform::CancelToken* cancel = nullptr);
// The same from where they lie now.
RelatedPictures TakePictures(const document::MessageDocument& document, std::string_view content_id_suffix,
                             const platform::CancelToken* cancel = nullptr);

// Whether the document's pictures go along at all.
bool TakesPictures(const document::MessageDocument& document, const MessageOptions& options);
// The pictures that would go along, and those to be asked about. Fails with kTryAgain when it is stopped.
Result<RelatedPictures> LookForPictures(const document::MessageDocument& document, const MessageOptions& options,
                                        const platform::CancelToken& cancel);

// What is to be told of them before anything goes out: those that go along, then those that do not, a sentence each; of
// many, the first and how many more there are.
std::vector<Sentence> ListPictures(const std::vector<Picture>& pictures, const std::vector<ForeignPicture>& foreign);

// What the person has to be asked about before the message can go out.
std::vector<std::filesystem::path> PicturesToAskFor(const std::vector<ForeignPicture>& foreign);
// Which they are, as a sentence, and with the question about them behind it.
Sentence NameForeign(const std::vector<std::filesystem::path>& files);
Sentence PictureQuestion(const std::vector<std::filesystem::path>& files);

}  // namespace quillcast::message
