import { render } from "preact";
import { App } from "./App";
import { takeToken } from "./stream";
import "uplot/dist/uPlot.min.css";
import "./style/page.css";

const page = document.getElementById("page");
if (page !== null) render(<App token={takeToken(location, history, sessionStorage)} />, page);
