#include "resilience/update/UpdateTrial.h"

namespace quillox {

bool UpdateTrial::isOver(const UpdateNotes& notes)
{
    return notes.trial && notes.trial->starts >= mostStarts;
}

UpdateTrial::Verdict UpdateTrial::judge(const UpdateNotes& notes, Ending ending)
{
    if (!notes.trial)
        return Verdict::Undecided;
    switch (ending) {
    case Ending::Well:
        return Verdict::Undecided;
    case Ending::Crashed:
        return isOver(notes) ? Verdict::RollBack : Verdict::Again;
    case Ending::Silent:
        // A second minute of a dark display would be one too many.
        return Verdict::RollBack;
    }
    return Verdict::RollBack;
}

UpdateNotes UpdateTrial::begun(UpdateNotes notes, Version installed, Version previous)
{
    notes.staged.reset();
    notes.trial = UpdateNotes::Trial { installed, previous };
    return notes;
}

UpdateNotes UpdateTrial::started(UpdateNotes notes)
{
    if (notes.trial)
        ++notes.trial->starts;
    return notes;
}

UpdateNotes UpdateTrial::endedWell(UpdateNotes notes)
{
    if (notes.trial)
        notes.trial->starts = 0;
    return notes;
}

UpdateNotes UpdateTrial::succeeded(UpdateNotes notes)
{
    notes.trial.reset();
    return notes;
}

UpdateNotes UpdateTrial::rolledBack(UpdateNotes notes)
{
    if (notes.trial)
        notes.rolledBack.insert(notes.trial->version);
    notes.trial.reset();
    return notes;
}

} // namespace quillox
