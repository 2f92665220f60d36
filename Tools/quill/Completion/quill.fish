# SPDX-License-Identifier: Apache-2.0
# Completion of quill in fish: quill completion fish | source
function __quill_words
    set -l words (commandline -opc) (string unescape -- (commandline -ct))
    command quill completion words -- $words[2..] 2>/dev/null
end
complete -c quill -n 'test -n "$(__quill_words)"' -f -a '(__quill_words)'
