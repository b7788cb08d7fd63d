// Questions to a prepared run, asked beside the window.
#pragma once

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include "desktop/widgets/background_task.h"
#include "document/message_document.h"
#include "profile/program.h"
#include "run/prepared_run.h"

namespace quillcast::desktop {

// Prepares the run on the task's thread, asks it `question`, and gives the answer to `take` on the window's. The
// question works on nothing of the window's: it may outlive its members.
template <typename Question, typename Take>
void AskPrepared(BackgroundTask* task, const profile::Program& program, const document::MessageDocument& document,
                 const run::ChosenGroup& group, Question question, Take take) {
  task->Start([&program, document, group, question = std::move(question),
               take = std::move(take)](const platform::CancelToken& cancel) -> std::function<void()> {
    auto prepared = run::Prepare(document, group, run::PlaceOf(program, cancel));
    using Answer = std::invoke_result_t<const Question&, run::PreparedRun&>;
    auto answer = std::make_shared<const Answer>(question(prepared));
    return [take, answer] { take(*answer); };
  });
}

}  // namespace quillcast::desktop
