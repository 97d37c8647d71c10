# The models of plain units. The test of each compares it with its unit on what the fuzzer has found and on so many inputs
# of up to so many random bytes; the rest are options of the fuzzer's program.
velk_model(containers/node_list NodeListModel 64 12000
    -fno-sanitize-coverage=trace-cmp)  # nothing to guess, and every node copied would be a comparison to tell of
velk_model(containers/text_buffer TextBufferModel 400 64 -fno-sanitize=all)
velk_model(containers/value_stack ValueStackModel 150 500 -fno-sanitize-coverage=trace-cmp)
velk_model(drawing/arc_geometry ArcGeometryModel 20000 48)
velk_model(integrity/dat_entries DatEntriesModel 5000 40 -fno-sanitize=all)
velk_model(shell/file_dialog_text FileDialogTextModel 20000 16 -fno-sanitize=all)
