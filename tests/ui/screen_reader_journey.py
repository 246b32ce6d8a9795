"""A planner with a screen reader at Mme Lefèvre's (client 00001, Monday 23/11/2026,
08:30-10:00, the sample account): everything is read and operated through the
accessibility bus, as Orca does; the only keys are those a planner types into a box.
"""

import sys

from desktop import INIT, TITLE, Desktop, check, run, step



def main():
    with Desktop() as desk:
        pz = desk.atspi
        window = desk.find("the demo's window", lambda o: o.name == TITLE)
        possibles = desk.by_name(pz.ROLE_LIST, "Possibles")
        selection = desk.by_name(pz.ROLE_LIST, "Sélection")
        total = desk.by_name(pz.ROLE_TEXT, "Total")
        desk.wait("the 12 proposals of Monday", lambda: possibles.childCount == 12)
        desk.shot("1-opened")
        # The same gestures for `velmora play`, where a reading is compared with headless.
        gestures = [INIT]

        @step("the demo's own controls read in French, by what they are")
        def _():
            nature = desk.find("the kind box", lambda o: o.getRole() == pz.ROLE_COMBO_BOX)
            # Qt names a combo box by its value on this desktop and links its label: Orca
            # reads "Nature, liste déroulante, AUTRE".
            check(desk.labels(nature)[:1] == ["Nature"] and nature.name == "AUTRE",
                  f"the kind box reads {desk.labels(nature)} « {nature.name} »")
            client = desk.by_name(pz.ROLE_TEXT, "Client")
            check(desk.text(client) == "00001", f"the client box holds « {desk.text(client)} »")
            desk.by_name(pz.ROLE_PUSH_BUTTON, "Garder la sélection")
            desk.by_name(pz.ROLE_TABLE, "Sélection gardée")

        @step("states read as they are: nothing ticked, the edit's buttons unavailable")
        def _():
            show_all = desk.by_name(pz.ROLE_CHECK_BOX, "Afficher toutes les tâches")
            check(pz.STATE_CHECKED not in desk.states(show_all), "the show-all box reads ticked")
            # Qt 6.4 says it of each row, not of the list.
            check({pz.STATE_SELECTABLE, pz.STATE_MULTISELECTABLE}
                  <= desk.states(possibles.getChildAtIndex(0)),
                  "the proposals do not read as rows to mark")
            for name in ("OK", "Annuler", "Supprimer"):
                button = desk.by_name(pz.ROLE_PUSH_BUTTON, name)
                check(pz.STATE_ENABLED not in desk.states(button), f"{name} reads available")

        @step("a row reads column by column with its heading and the whole task name")
        def _():
            heard = possibles.getChildAtIndex(9).name
            for words in ("Type : Courses et repas",
                          "Tâche : Accompagnement aux courses alimentaires",
                          "Durée : 60 min", "facultative"):
                check(words in heard, f"the tenth proposal reads « {heard} », without « {words} »")

        @step("Repassage marked through the list's row selection, Aspirateur by its row's action")
        def _():
            # Qt 6.4 gives a list AT-SPI's Table, whose row selection Orca uses, and no
            # Selection interface.
            check(possibles.queryTable().addRowSelection(3), "the list refused to mark Repassage")
            desk.act(possibles.getChildAtIndex(5), "Toggle", "toggle")
            desk.wait("Repassage and Aspirateur reported marked",
                      lambda: [i for i in range(12) if pz.STATE_SELECTED in
                               desk.states(possibles.getChildAtIndex(i))] == [3, 5])
            gestures.extend(["mark possible 3", "mark possible 5"])
            check(list(possibles.queryTable().getSelectedRows()) == [3, 5],
                  f"the list counts {list(possibles.queryTable().getSelectedRows())} marked")

        @step("Sélectionner moves both into the chosen tasks: 2h10")
        def _():
            desk.act(desk.by_name(pz.ROLE_PUSH_BUTTON, "Sélectionner"), "Press", "press")
            gestures.append("press select")
            desk.wait("six chosen tasks", lambda: selection.childCount == 6)
            chosen = desk.row_names(selection)
            for task in ("Repassage", "Aspirateur"):
                check(any(f"Tâche : {task}," in row for row in chosen), f"{task} not in {chosen}")
            desk.wait_reads("the total", lambda: desk.text(total), "2h10")
            desk.shot("2-selected")

        # Repassage takes 25 minutes today: focus its row, Return opens the edit with the
        # focus in the duration box, the planner types over the 40 and presses OK.
        def ironing():
            return desk.row_of(selection, "Tâche : Repassage,")

        duration = desk.by_name(pz.ROLE_TEXT, "Durée")

        @step("Repassage chosen, Tab into the list, Return opens its edit in the duration box")
        def _():
            # Choosing the row through the list's row selection is a click on it; then Tab
            # takes the focus into the list, onto that row (Qt 6.4 gives neither a list nor
            # a row AT-SPI's GrabFocus).
            row = selection.getChildAtIndex(ironing())
            check(selection.queryTable().addRowSelection(ironing()), "the list refused Repassage")
            desk.wait("Repassage reported chosen", lambda: pz.STATE_SELECTED in desk.states(row))
            gestures.append(f"click selected {ironing()}")
            desk.focus_window(TITLE)
            desk.tab_to("the chosen tasks", selection)
            desk.wait("the focus on the Repassage row", lambda: pz.STATE_FOCUSED in desk.states(row))
            desk.keys("Return")
            gestures.append(f"double-click selected {ironing()}")
            desk.wait("the focus in the duration box",
                      lambda: pz.STATE_FOCUSED in desk.states(duration))
            check(desk.text(duration) == "40", f"the duration box holds « {desk.text(duration)} »")

        @step("25 typed over the 40, OK: Repassage at 25 min, 1h55, the focus back")
        def _():
            desk.type("25")
            desk.wait_reads("the duration box", lambda: desk.text(duration), "25")
            desk.shot("3-editing")
            desk.act(desk.by_name(pz.ROLE_PUSH_BUTTON, "OK"), "Press", "press")
            gestures.extend(["clear duration", "type duration 25", "press ok"])
            desk.wait("Repassage at 25 minutes",
                      lambda: "Durée : 25 min" in selection.getChildAtIndex(ironing()).name)
            desk.wait_reads("the total", lambda: desk.text(total), "1h55")
            desk.wait("the focus back in the chosen tasks",
                      lambda: desk.focused() in [selection, *desk.children(selection)])
            warning = desk.by_name(pz.ROLE_LABEL, "Au moins une tâche impérative")
            check(desk.showing(warning), "the mandatory-task warning is not shown")

        @step("the host keeps the selection and its table reads it back")
        def _():
            desk.act(desk.by_name(pz.ROLE_PUSH_BUTTON, "Garder la sélection"), "Press", "press")
            gestures.append("host maj-enr")
            record = desk.by_name(pz.ROLE_TABLE, "Sélection gardée")
            desk.wait("six kept rows", lambda: record.queryTable().nRows == 6)
            table = record.queryTable()
            kept = {table.getAccessibleAt(r, 0).name: table.getAccessibleAt(r, 1).name
                    for r in range(6)}
            check(kept.get("Repassage") == "25" and kept.get("Aspirateur") == "20",
                  f"the host kept {kept}")
            host_total = desk.find("the host's total",
                                   lambda o: o.name.startswith("Total pour l'hôte"))
            check(host_total.name == "Total pour l'hôte : 115 min",
                  f"the host reads « {host_total.name} »")
            desk.shot("4-kept")

        @step("« Afficher toutes les tâches » ticked and unticked through the bus, as headless")
        def _():
            ticked = desk.play([*gestures, "tick all", "show"])
            unticked = desk.play([*gestures, "tick all", "tick all", "show"])
            show_all = desk.by_name(pz.ROLE_CHECK_BOX, "Afficher toutes les tâches")
            desk.act(show_all, "Toggle")
            desk.wait(f"the {len(ticked['Lst_Possible'])} tasks of the catalogue",
                      lambda: possibles.childCount == len(ticked["Lst_Possible"]))
            check(pz.STATE_CHECKED in desk.states(show_all), "the show-all box reads unticked")
            desk.act(show_all, "Toggle")
            desk.wait(f"the {len(unticked['Lst_Possible'])} proposals again",
                      lambda: possibles.childCount == len(unticked["Lst_Possible"]))
            check(pz.STATE_CHECKED not in desk.states(show_all), "the show-all box reads ticked")
            desk.wait_reads("the total", lambda: desk.text(total), unticked["Txt_Duree"])

        @step("every shown object has a French name; the hidden code lists are not there")
        def _():
            faults = desk.unnamed_or_code_named(window)
            check(not faults, "a screen reader cannot name:\n  " + "\n  ".join(faults))

    print("screen reader journey: passed")


if __name__ == "__main__":
    sys.exit(run(main))
