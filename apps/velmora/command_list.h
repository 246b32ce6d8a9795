// The subcommands of the velmora tool, in the order of the tool's help. A new command
// is a new file defining `const Command& xxxCommand()`, and one line here.
VELMORA_COMMAND(sampleCommand)
VELMORA_COMMAND(importCommand)
VELMORA_COMMAND(exportCommand)
VELMORA_COMMAND(queryCommand)
VELMORA_COMMAND(getCommand)
VELMORA_COMMAND(proposeCommand)
VELMORA_COMMAND(consultCommand)
VELMORA_COMMAND(playCommand)
