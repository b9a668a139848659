#compdef tulplayer

_arguments -S \
  '(- *)--help[list the options]' \
  '(- *)--version[print the version]' \
  '--new-window[open a window of its own]' \
  '(- *)--play-pause[play or pause the running player]' \
  '(- *)--next[go to the next entry]' \
  '(- *)--previous[go to the previous entry]' \
  '(- *)--stop[stop]' \
  '(- *)--volume[set the volume]:percent (0 to 100):' \
  '(- *)--status[print what plays]' \
  '--json[print the status as JSON]' \
  '--demo[play for half a minute and leave a screenshot]:screenshot:_files' \
  '*:file, folder or address:{ _files || _urls }'
