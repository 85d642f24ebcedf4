#include "host/program.h"

#include <new>

#include "host/arguments.h"
#include "host/commands/check.h"
#include "host/commands/completion.h"
#include "host/commands/describe.h"
#include "host/commands/gallery.h"
#include "host/commands/list.h"
#include "host/commands/manual.h"
#include "host/commands/presets.h"
#include "host/commands/render.h"
#include "host/commands/sweep.h"

namespace kelmora::host {
namespace {

/// Runs what the variant holds.
struct Runner {
    std::ostream& out;
    std::ostream& errors;

    ExitCode operator()(const TextAnswer& answer) const
    {
        if (answer.code == ExitCode::Done)
            out << answer.text;
        else
            errors << "kelmora: " << answer.text << '\n';
        return answer.code;
    }
    ExitCode operator()(const ListArguments& arguments) const
    {
        RunList(arguments, out);
        return ExitCode::Done;
    }
    ExitCode operator()(const DescribeArguments& arguments) const
    {
        RunDescribe(arguments, out);
        return ExitCode::Done;
    }
    ExitCode operator()(const RenderArguments& arguments) const
    {
        RunRender(arguments, out, errors);
        return ExitCode::Done;
    }
    ExitCode operator()(const SweepArguments& arguments) const
    {
        RunSweep(arguments);
        return ExitCode::Done;
    }
    ExitCode operator()(const GalleryArguments& arguments) const
    {
        RunGallery(arguments, out);
        return ExitCode::Done;
    }
    ExitCode operator()(const PresetsArguments& arguments) const
    {
        RunPresets(arguments, out);
        return ExitCode::Done;
    }
    ExitCode operator()(const CompletionArguments& arguments) const
    {
        out << CompletionFor(DescribeProgram(), arguments.shell);
        return ExitCode::Done;
    }
    ExitCode operator()(const ManualArguments&) const
    {
        out << ManualFor(DescribeProgram());
        return ExitCode::Done;
    }
    ExitCode operator()(const CheckArguments& arguments) const { return RunCheck(arguments, out, errors); }
};

int Fail(std::ostream& errors, ExitCode code, const std::string& message)
{
    errors << "kelmora: " << message << '\n';
    return static_cast<int>(code);
}

} // namespace

int RunProgram(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& errors)
{
    try {
        const ExitCode code = std::visit(Runner{out, errors}, ParseArguments(arguments));
        out.flush();
        if (!out)
            return Fail(errors, ExitCode::Failed, "cannot write to the standard output");
        return static_cast<int>(code);
    } catch (const Failure& failure) {
        return Fail(errors, failure.Code(), failure.what());
    } catch (const std::bad_alloc&) {
        return Fail(errors, ExitCode::Failed, "there is not enough memory");
    } catch (const std::exception& other) {
        return Fail(errors, ExitCode::Failed, other.what());
    }
}

} // namespace kelmora::host
